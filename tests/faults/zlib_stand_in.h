// Replaces zlib in the fault tests. The linker's --wrap redirects the test program's calls of the gzip file
// functions here, where they use files in memory, fail one kind at a time, and are counted.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// A fault of one kind of call.
enum class EZlibFault {
    none,
    openFails,       ///< gzopen and gzdopen return null
    nothingWritten,  ///< gzwrite writes nothing and returns 0
    shortWrite,      ///< gzwrite writes all but the last character and returns that count
    writeError,      ///< gzwrite writes nothing and returns -1
    readError,       ///< gzread returns -1
    closeError,      ///< gzclose closes, but returns Z_ERRNO
};

/// A fault, and the number of calls that have it before later ones succeed.
class TZlibFaults {
  public:
    static constexpr std::size_t endless = static_cast<std::size_t>(-1);

    TZlibFaults() = default;
    explicit TZlibFaults(EZlibFault fault, std::size_t count = endless) : fault_(fault), left_(count) {}

    /// Returns true, and counts it, if the current call has this fault.
    bool Strike(EZlibFault fault) {
        if (fault != fault_ || left_ == 0) {
            return false;
        }
        --left_;
        return true;
    }

  private:
    EZlibFault fault_ = EZlibFault::none;
    std::size_t left_ = 0;
};

/// One call: 'o'pen, 'r'ead, 'w'rite or 'c'lose, and its size argument.
using TZlibCall = std::pair<char, std::size_t>;

/// Files in memory: each file opened for writing is new, each file opened for reading contains the same text.
/// In the mode that uses the real zlib, files are on the disk.
class TZlibStandIn {
  public:
    /// The text of every file in memory that is opened for reading.
    std::string readable;
    TZlibFaults faults;
    /// If true, calls go to the real zlib and only `leftOpen` is counted.
    bool isReal = false;

    std::vector<TZlibCall> calls;
    /// The text written to each file, in the order of opening.
    std::vector<std::string> written;
    std::vector<gzFile> leftOpen;

    gzFile Open(const char* mode);
    int Read(gzFile file, char* target, std::size_t size);
    int Write(gzFile file, const char* source, std::size_t size);
    int Close(gzFile file);
    void Opened(gzFile file);
    void Closed(gzFile file);

  private:
    struct TFile {
        std::size_t readAt = 0;
        std::size_t writtenIndex = 0;
    };
    static TFile& FileOf(gzFile file) { return *reinterpret_cast<TFile*>(file); }
};

/// Returns the replacement of zlib in this process. Assign a new one to reset it.
TZlibStandIn& Zlib();
