// The one door to the machine's files. Paths are written as on the machine ("/sys/class/dmi/id/board_name")
// and resolved below the door's root, so that a live machine, a captured tree and a test's files are read
// alike.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// How an access ended. Nothing here throws but for lack of memory.
enum class EReadStatus {
    ok,
    notFound,  ///< no such file, a path component that is no directory, or an attribute without a value
    denied,    ///< there, but not for this user
    failed,    ///< an input error, a file larger than the cap, something that is not a regular file
};

/// A value, or why there is none. `value` is empty unless `status` is ok.
template <typename T>
struct TReadResult {
    EReadStatus status = EReadStatus::notFound;
    T value{};
    std::string error;  ///< path and cause, one line; empty when ok

    bool IsOk() const { return status == EReadStatus::ok; }
};

class ISystemFiles {
  public:
    /// No file of /proc or /sys that collectors read comes near this; hitting it is `failed`, never a cut.
    static constexpr std::size_t maxFileBytes = std::size_t{64} << 20;

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
