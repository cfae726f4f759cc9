// The only access to the machine's files. Paths are those of the machine ("/sys/class/dmi/id/board_name") and
// are resolved below a root, so that a live machine, a captured tree and the files of a test are read alike.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The outcome of an access.
enum class EReadStatus {
    ok,
    notFound,  ///< no such file, a path component that is not a directory, or an attribute without a value
    denied,    ///< permission denied
    failed,    ///< an input error, a file or folder larger than the cap, something that is not a regular file
    timedOut,  ///< an earlier access to the same path did not return in time
    asleep,    ///< the read would wake a device that sleeps
};

/// Thrown if the system has no descriptor or no memory left for an access. The file may exist, so this is not
/// an answer about the machine: it ends the run.
class TResourcesExhausted : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// True if the errno value `error` reports a lack of resources rather than a property of the file.
bool IsExhaustion(int error);

/// A value, or the reason why there is none. `value` is empty unless `status` is ok.
template <typename T>
struct TReadResult {
    EReadStatus status = EReadStatus::notFound;
    T value{};
    std::string error;  ///< path and cause, one line; empty if ok
    int cause = 0;      ///< errno of a failed access; 0 if it failed without one

    bool IsOk() const { return status == EReadStatus::ok; }
};

/// Errors: throws TResourcesExhausted and std::bad_alloc; every other failure is a status.
class ISystemFiles {
  public:
    /// Cap for the size of a file, far above that of any file of /proc or /sys. Exceeding it is `failed`; a
    /// file is never truncated silently.
    static constexpr std::size_t maxFileBytes = std::size_t{64} << 20;
    /// Cap for the entries of a folder, with the same effect: /proc has at most 4 million processes, machines
    /// have thousands.
    static constexpr std::size_t maxFolderEntries = 1'000'000;

    virtual ~ISystemFiles() = default;

    /// Reads the whole file, up to its end: the sizes that the kernel reports for its files are wrong.
    virtual TReadResult<std::string> ReadText(std::string_view path) const = 0;
    /// Reads at most `maxBytes` from the start of a file. Longer files are truncated.
    virtual TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const = 0;
    /// Lists the names of the entries except "." and "..", sorted bytewise.
    virtual TReadResult<std::vector<std::string>> List(std::string_view path) const = 0;
    /// Reads the target of a symbolic link, unchanged.
    virtual TReadResult<std::string> ReadLink(std::string_view path) const = 0;
    /// True if the path exists after following links.
    virtual bool Exists(std::string_view path) const = 0;
};

}  // namespace NVORHOST
