// The one door to the machine's files. Paths are written as on the machine ("/sys/class/dmi/id/board_name")
// and resolved below the door's root, so that a live machine, a captured tree and a test's files are read
// alike.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// How an access ended.
enum class EReadStatus {
    ok,
    notFound,  ///< no such file, a path component that is no directory, or an attribute without a value
    denied,    ///< there, but not for this user
    failed,    ///< an input error, a file or folder larger than the cap, something that is not a regular file
    timedOut,  ///< an earlier access to the same path has not returned within the time that a run has
};

/// The system has no descriptor or no memory left for an access. What it asked for may be there, so this is
/// no answer about the machine: a run ends with it.
class TResourcesExhausted : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// True when errno `error` means that, rather than something about the file.
bool IsExhaustion(int error);

/// A value, or why there is none. `value` is empty unless `status` is ok.
template <typename T>
struct TReadResult {
    EReadStatus status = EReadStatus::notFound;
    T value{};
    std::string error;  ///< path and cause, one line; empty when ok
    int cause = 0;      ///< errno of an access that failed; 0 when it was refused without one

    bool IsOk() const { return status == EReadStatus::ok; }
};

/// Errors: throws TResourcesExhausted and std::bad_alloc; every other failure is a status.
class ISystemFiles {
  public:
    /// No file of /proc or /sys that collectors read comes near this; hitting it is `failed`, never a cut.
    static constexpr std::size_t maxFileBytes = std::size_t{64} << 20;
    /// Likewise for the entries of a folder: /proc has at most 4 million processes, machines thousands.
    static constexpr std::size_t maxFolderEntries = 1'000'000;

    virtual ~ISystemFiles() = default;

    /// The whole file. Kernel files lie about their size, so it is read to the end.
    virtual TReadResult<std::string> ReadText(std::string_view path) const = 0;
    /// At most `maxBytes` from the start of a binary file; longer files are cut there, which the caller asked
    /// for.
    virtual TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const = 0;
    /// Entry names without "." and "..", sorted bytewise.
    virtual TReadResult<std::vector<std::string>> List(std::string_view path) const = 0;
    /// The target of a symbolic link as it stands in the link.
    virtual TReadResult<std::string> ReadLink(std::string_view path) const = 0;
    /// True when the path, links followed, leads to something.
    virtual bool Exists(std::string_view path) const = 0;
};

}  // namespace NVORHOST
