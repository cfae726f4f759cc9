// A record of the calls that reach zlib, with faults to order. Sizes of single writes and the descriptors
// left open cannot be seen in the files; the linker's --wrap sends every such call of the test program
// through here.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// What zlib was asked since the last reset, in order of the calls, and how it is to fail.
struct TZlibCalls {
    static constexpr std::size_t never = static_cast<std::size_t>(-1);

    std::vector<std::string> openModes;           // of gzopen and gzdopen
    std::vector<gzFile> opened;                   // their answers
    std::vector<unsigned> writeSizes;             // asked of gzwrite
    std::vector<unsigned> readSizes;              // asked of gzread
    std::vector<std::pair<int, int>> parameters;  // level and strategy of gzsetparams
    std::vector<const void*> writeSources;        // of gzwrite
    std::vector<gzFile> closed;
    std::vector<const void*> heldArrays;  // by the non-throwing array new, not deleted yet

    std::size_t failingWrite = never;  // index of the gzwrite from which on all write nothing and answer 0
    std::size_t shortWrite = never;    // index of the gzwrite that writes but answers one less
    bool pretendWrites = false;        // answer as if written, write nothing
    int closeAnswer = Z_OK;            // answered in place of zlib's own Z_OK
    bool noMemory = false;             // the non-throwing array new answers null
    bool cancelsInClose = false;       // cancel the thread when gzclose has closed the file
};

/// The record, which `TGzstreamFixture` resets before every test.
TZlibCalls& ZlibCalls();
