// System calls whose answers a test sets.
#pragma once

#include "machine/system/system_calls.h"

namespace NVORHOST {

struct TFakeSystemCalls final : ISystemCalls {
    std::optional<std::string> kernelRelease, nodeName, architecture, hypervisorSignature;
    std::optional<std::uint32_t> pageSizeBytes, clockTicksPerSecond;
    std::optional<int> utcOffsetMinutes;  // at every moment
    std::optional<std::vector<TInterfaceAddress>> interfaceAddresses;

    std::optional<std::string> KernelRelease() const override { return kernelRelease; }
    std::optional<std::string> NodeName() const override { return nodeName; }
    std::optional<std::string> Architecture() const override { return architecture; }
    std::optional<std::uint32_t> PageSizeBytes() const override { return pageSizeBytes; }
    std::optional<std::uint32_t> ClockTicksPerSecond() const override { return clockTicksPerSecond; }
    std::optional<std::string> HypervisorSignature() const override { return hypervisorSignature; }
    std::optional<int> UtcOffsetMinutes(std::int64_t) const override { return utcOffsetMinutes; }
    std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const override {
        return interfaceAddresses;
    }
};

}  // namespace NVORHOST
