// Answers of the running system.
#pragma once

#include "machine/system/system_calls.h"

namespace NVORHOST {

class TLiveSystemCalls final : public ISystemCalls {
  public:
    std::optional<std::string> KernelRelease() const override;
    std::optional<std::string> NodeName() const override;
    std::optional<std::string> Architecture() const override;
    std::optional<std::uint32_t> PageSizeBytes() const override;
    std::optional<std::uint32_t> ClockTicksPerSecond() const override;
    std::optional<std::string> HypervisorSignature() const override;
    /// Uses the time zone of the process: TZ, or else /etc/localtime.
    std::optional<int> UtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override;
    /// Calls getifaddrs(3).
    /// Errors: throws TResourcesExhausted without descriptors or memory.
    std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const override;
};

}  // namespace NVORHOST
