// What a captured tree holds of the answers that a live system gives through system calls. Nothing of the
// machine that reads the tree shows through.
#pragma once

#include "machine/replay/capture_answers.h"
#include "machine/system/system_calls.h"
#include "machine/system/system_files.h"

namespace NVORHOST {

class TReplaySystemCalls final : public ISystemCalls {
  public:
    /// Takes the answers that `files` keeps; `files` must outlive this object.
    explicit TReplaySystemCalls(const ISystemFiles& files)
        : files_(files), answers_(ReadCaptureAnswers(files)) {}

    const TCaptureAnswers& GetAnswers() const { return answers_.value; }
    /// Path and cause when the tree keeps answers that cannot be read; else empty.
    const std::string& GetAnswersError() const { return answers_.error; }

    // A tree from elsewhere, without such answers, has some of them among its files.

    /// Else /proc/sys/kernel/osrelease.
    std::optional<std::string> KernelRelease() const override;
    /// Else /proc/sys/kernel/hostname, else /etc/hostname.
    std::optional<std::string> NodeName() const override;
    /// Else /proc/sys/kernel/arch.
    std::optional<std::string> Architecture() const override;

    std::optional<std::uint32_t> PageSizeBytes() const override { return answers_.value.pageSizeBytes; }
    std::optional<std::uint32_t> ClockTicksPerSecond() const override {
        return answers_.value.clockTicksPerSecond;
    }
    std::optional<std::string> HypervisorSignature() const override {
        return answers_.value.hypervisorSignature;
    }
    /// Of the moments that were asked about on the machine, no others.
    std::optional<int> UtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override;
    std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const override {
        return answers_.value.interfaceAddresses;
    }

  private:
    const ISystemFiles& files_;
    TReadResult<TCaptureAnswers> answers_;
};

}  // namespace NVORHOST
