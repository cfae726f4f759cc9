// Answers of the running system.
#pragma once

#include "machine/system/system_calls.h"

namespace NVORHOST {

class TLiveSystemCalls final : public ISystemCalls {
  public:
    std::optional<std::string> ReadKernelRelease() const override;
    std::optional<std::string> ReadNodeName() const override;
    std::optional<std::string> ReadArchitecture() const override;
    std::optional<std::uint32_t> ReadPageSizeBytes() const override;
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override;
    std::optional<std::string> ReadHypervisorSignature() const override;
    /// Uses the time zone of the process: TZ, or else /etc/localtime.
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override;
    /// Calls getifaddrs(3).
    /// Errors: throws TResourcesExhausted without descriptors or memory.
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override;
    /// Never triggers an automount.
    /// Errors: throws TResourcesExhausted without descriptors or memory.
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const override;
};

}  // namespace NVORHOST
