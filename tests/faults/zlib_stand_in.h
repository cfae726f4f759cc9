// What takes zlib's place in the fault tests. The linker's --wrap sends the test program's calls of the gzip
// file functions here, so that they can be answered from memory, made to fail one kind at a time, and
// counted.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// A fault of one kind of call.
enum class EZlibFault {
    none,
    openFails,       ///< gzopen and gzdopen answer null
    nothingWritten,  ///< gzwrite takes nothing and answers 0
    shortWrite,      ///< gzwrite takes all but the last character and says so
    writeError,      ///< gzwrite takes nothing and answers -1
    readError,       ///< gzread answers -1
    closeError,      ///< gzclose closes, but answers Z_ERRNO
};

/// A fault, and how many calls have it before they succeed again.
class TZlibFaults {
  public:
    static constexpr std::size_t endless = static_cast<std::size_t>(-1);

    TZlibFaults() = default;
    explicit TZlibFaults(EZlibFault fault, std::size_t count = endless) : fault_(fault), left_(count) {}

    /// Whether the call that is being made has this fault; counts it if so.
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

/// One call: 'o'pen, 'r'ead, 'w'rite or 'c'lose, and the size that it asked for.
using TZlibCall = std::pair<char, std::size_t>;

/// Files in memory: a file opened for writing is a new one; a file opened for reading has a text of its own
/// to read from. The real zlib opens them on the disk under the name it is given, and is what the others
/// stand in for.
class TZlibStandIn {
  public:
    /// What every file opened for reading holds, in memory.
    std::string readable;
    TZlibFaults faults;
    /// Calls reach the real zlib and are counted only as far as `leftOpen` needs it.
    bool isReal = false;

    std::vector<TZlibCall> calls;
    /// What each file opened for writing was given, in the order of opening.
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

/// The stand-in of this process. Assigning a new one starts afresh.
TZlibStandIn& Zlib();
