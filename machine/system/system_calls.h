// Answers of system calls that collectors need in addition to files. Each may be absent, because a captured
// tree has no live answers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// An address of a network interface.
struct TInterfaceAddress {
    std::optional<std::string> interface;  ///< absent if the source does not name it
    std::string address;                   ///< 4 or 16 bytes in network order
};

/// The size of a mounted file system.
struct TFileSystemSpace {
    std::uint64_t blockSizeBytes = 0;  ///< unit in which the file system counts
    std::uint64_t sizeBytes = 0;
    std::uint64_t availableBytes = 0;  ///< free for ordinary users; changes all the time

    bool operator==(const TFileSystemSpace&) const = default;
};

class ISystemCalls {
  public:
    virtual ~ISystemCalls() = default;

    /// Reads the release, nodename and machine of uname(2).
    virtual std::optional<std::string> ReadKernelRelease() const = 0;
    virtual std::optional<std::string> ReadNodeName() const = 0;
    virtual std::optional<std::string> ReadArchitecture() const = 0;
    /// Reads the size of a page in bytes, AT_PAGESZ.
    virtual std::optional<std::uint32_t> ReadPageSizeBytes() const = 0;
    /// Reads the ticks per second of the clock fields in /proc, AT_CLKTCK.
    virtual std::optional<std::uint32_t> ReadClockTicksPerSecond() const = 0;
    /// Reads the 12-byte signature of CPUID leaf 40000000h without trailing zeros; absent if the processor
    /// reports no hypervisor.
    virtual std::optional<std::string> ReadHypervisorSignature() const = 0;
    /// Reads the difference between local time and UTC, in minutes east, at a moment in seconds since
    /// 1970-01-01 UTC.
    virtual std::optional<int> ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const = 0;
    /// Reads all IPv4 and IPv6 addresses of all interfaces, in no particular order.
    virtual std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const = 0;
    /// Reads the size of the file system that is mounted at `mountPoint`, with statvfs(3). The call of a
    /// network or FUSE file system may never return, so callers restrict themselves to others.
    virtual std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const = 0;
};

}  // namespace NVORHOST
