// System calls whose answers a test sets.
#pragma once

#include "machine/system/system_calls.h"

namespace NVORHOST {

struct TFakeSystemCalls final : ISystemCalls {
    std::optional<std::string> kernelRelease, nodeName, architecture, hypervisorSignature;
    std::optional<std::uint32_t> pageSizeBytes, clockTicksPerSecond;
    std::optional<int> utcOffsetMinutes;  // at every moment
    std::optional<std::vector<TInterfaceAddress>> interfaceAddresses;

    std::optional<std::string> ReadKernelRelease() const override { return kernelRelease; }
    std::optional<std::string> ReadNodeName() const override { return nodeName; }
    std::optional<std::string> ReadArchitecture() const override { return architecture; }
    std::optional<std::uint32_t> ReadPageSizeBytes() const override { return pageSizeBytes; }
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override { return clockTicksPerSecond; }
    std::optional<std::string> ReadHypervisorSignature() const override { return hypervisorSignature; }
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t) const override { return utcOffsetMinutes; }
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override {
        return interfaceAddresses;
    }
};

}  // namespace NVORHOST
