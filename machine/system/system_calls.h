// The answers of system calls that collectors need beside files. A captured tree has no live answers, so each
// one may be absent.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// An address of a network interface.
struct TInterfaceAddress {
    std::string interface;
    std::string address;  ///< 4 or 16 bytes in network order
};

class ISystemCalls {
  public:
    virtual ~ISystemCalls() = default;

    /// uname(2) release, nodename and machine.
    virtual std::optional<std::string> KernelRelease() const = 0;
    virtual std::optional<std::string> NodeName() const = 0;
    virtual std::optional<std::string> Architecture() const = 0;
    /// Bytes of a page, AT_PAGESZ.
    virtual std::optional<std::uint32_t> PageSizeBytes() const = 0;
    /// Ticks in a second of /proc's clock fields, AT_CLKTCK.
    virtual std::optional<std::uint32_t> ClockTicksPerSecond() const = 0;
    /// The 12-byte signature of CPUID leaf 40000000h when the processor says it runs under a hypervisor;
    /// trailing zero bytes are left out.
    virtual std::optional<std::string> HypervisorSignature() const = 0;
    /// Minutes east of UTC that local time was ahead at a moment (seconds since 1970-01-01 UTC).
    virtual std::optional<int> UtcOffsetMinutes(std::int64_t secondsSinceEpoch) const = 0;
    /// Every IPv4 and IPv6 address of every interface, in any order.
    virtual std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const = 0;
};

}  // namespace NVORHOST
