// Records the test program's calls of zlib and makes them fail on request. The files do not show the sizes of
// single writes or open descriptors, so the linker's --wrap redirects every such call to these wrappers.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// The calls of zlib since the last reset, in order, and the failures to inject.
struct TZlibCalls {
    static constexpr std::size_t never = static_cast<std::size_t>(-1);

    std::vector<std::string> openModes;           // passed to gzopen and gzdopen
    std::vector<gzFile> opened;                   // returned by them
    std::vector<unsigned> writeSizes;             // passed to gzwrite
    std::vector<unsigned> readSizes;              // passed to gzread
    std::vector<std::pair<int, int>> parameters;  // level and strategy passed to gzsetparams
    std::vector<const void*> writeSources;        // passed to gzwrite
    std::vector<gzFile> closed;
    std::vector<const void*> heldArrays;  // from the non-throwing array new, not deleted yet

    std::size_t failingWrite =
        never;  // index of the first gzwrite that writes nothing and returns 0, as all later ones do
    std::size_t shortWrite = never;  // index of the gzwrite that returns one less than it writes
    bool pretendWrites = false;      // gzwrite reports success and writes nothing
    int closeResult = Z_OK;          // returned instead of zlib's Z_OK
    bool noMemory = false;           // the non-throwing array new returns null
    bool cancelsInClose = false;     // the thread is cancelled after gzclose closed the file
};

/// Returns the record, which `TGzstreamFixture` resets before every test.
TZlibCalls& ZlibCalls();
