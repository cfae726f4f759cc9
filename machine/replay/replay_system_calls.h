// Answers of system calls from a captured tree. The machine that reads the tree has no influence on them.
#pragma once

#include "machine/replay/capture_answers.h"
#include "machine/system/system_calls.h"
#include "machine/system/system_files.h"

namespace NVORHOST {

class TReplaySystemCalls final : public ISystemCalls {
  public:
    /// Reads the answers in `files`, which must outlive this object.
    explicit TReplaySystemCalls(const ISystemFiles& files)
        : files_(files), answers_(ReadCaptureAnswers(files)) {}

    const TCaptureAnswers& GetAnswers() const { return answers_.value; }
    /// True for a tree with answers that have been read.
    bool HasAnswers() const { return answers_.IsOk(); }
    /// Returns the path and the cause if the tree has answers that cannot be read; nullopt otherwise.
    std::optional<std::string> FindAnswersError() const {
        return HasAnswers() || answers_.status == EReadStatus::notFound ? std::nullopt
                                                                        : std::optional(answers_.error);
    }

    // A tree that another tool copied has no answers, but has some of them in its files.

    /// Falls back to /proc/sys/kernel/osrelease.
    std::optional<std::string> ReadKernelRelease() const override;
    /// Falls back to /proc/sys/kernel/hostname, then to /etc/hostname.
    std::optional<std::string> ReadNodeName() const override;
    /// Falls back to /proc/sys/kernel/arch.
    std::optional<std::string> ReadArchitecture() const override;

    std::optional<std::uint32_t> ReadPageSizeBytes() const override { return answers_.value.pageSizeBytes; }
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override {
        return answers_.value.clockTicksPerSecond;
    }
    std::optional<std::string> ReadHypervisorSignature() const override {
        return answers_.value.hypervisorSignature;
    }
    /// Absent for a moment whose offset was not captured.
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override;
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override {
        return answers_.value.interfaceAddresses;
    }
    /// Absent for a mount point whose space was not captured.
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const override;

  private:
    const ISystemFiles& files_;
    TReadResult<TCaptureAnswers> answers_;
};

}  // namespace NVORHOST
