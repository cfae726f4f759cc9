// System calls whose answers a test sets.
#pragma once

#include "machine/system/system_calls.h"

#include <functional>
#include <map>
#include <string>

namespace NVORHOST {

struct TFakeSystemCalls final : ISystemCalls {
    std::optional<std::string> kernelRelease, nodeName, architecture, hypervisorSignature;
    std::optional<std::uint32_t> pageSizeBytes, clockTicksPerSecond;
    std::optional<int> utcOffsetMinutes;  // at every moment
    std::optional<std::vector<TInterfaceAddress>> interfaceAddresses;
    std::map<std::string, TFileSystemSpace, std::less<>> fileSystemSpaces;  // by mount point

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
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const override {
        const auto found = fileSystemSpaces.find(mountPoint);
        return found == fileSystemSpaces.end() ? std::nullopt : std::optional(found->second);
    }
};

}  // namespace NVORHOST
