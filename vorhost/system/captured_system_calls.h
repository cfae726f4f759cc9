// What a captured tree holds of the answers that a live system gives through system calls. Nothing of the
// machine that reads the tree shows through.
#pragma once

#include "vorhost/system/system_calls.h"
#include "vorhost/system/system_files.h"

namespace NVORHOST {

class TCapturedSystemCalls final : public ISystemCalls {
  public:
    /// Reads from `files` at each question; `files` must outlive this object.
    explicit TCapturedSystemCalls(const ISystemFiles& files) : files_(files) {}

    /// /proc/sys/kernel/osrelease.
    std::optional<std::string> KernelRelease() const override;
    /// /proc/sys/kernel/hostname, else /etc/hostname.
    std::optional<std::string> NodeName() const override;
    /// /proc/sys/kernel/arch.
    std::optional<std::string> Architecture() const override;

    // A tree does not keep the following.
    std::optional<std::uint32_t> PageSizeBytes() const override { return std::nullopt; }
    std::optional<std::uint32_t> ClockTicksPerSecond() const override { return std::nullopt; }
    std::optional<std::string> HypervisorSignature() const override { return std::nullopt; }
    std::optional<int> UtcOffsetMinutes(std::int64_t) const override { return std::nullopt; }
    std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const override { return std::nullopt; }

  private:
    const ISystemFiles& files_;
};

}  // namespace NVORHOST
