// Forwards every system call and records its answer.
#pragma once

#include "machine/replay/capture_answers.h"
#include "machine/system/system_calls.h"

namespace NVORHOST {

class TSystemCallRecorder final : public ISystemCalls {
  public:
    /// `calls` must outlive this object.
    explicit TSystemCallRecorder(const ISystemCalls& calls) : calls_(calls) {}

    std::optional<std::string> ReadKernelRelease() const override {
        return answers_.kernelRelease = calls_.ReadKernelRelease();
    }
    std::optional<std::string> ReadNodeName() const override {
        return answers_.nodeName = calls_.ReadNodeName();
    }
    std::optional<std::string> ReadArchitecture() const override {
        return answers_.architecture = calls_.ReadArchitecture();
    }
    std::optional<std::uint32_t> ReadPageSizeBytes() const override {
        return answers_.pageSizeBytes = calls_.ReadPageSizeBytes();
    }
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override {
        return answers_.clockTicksPerSecond = calls_.ReadClockTicksPerSecond();
    }
    std::optional<std::string> ReadHypervisorSignature() const override {
        return answers_.hypervisorSignature = calls_.ReadHypervisorSignature();
    }
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override {
        const auto offset = calls_.ReadUtcOffsetMinutes(secondsSinceEpoch);
        if (offset) {
            answers_.utcOffsetMinutes[secondsSinceEpoch] = *offset;
        }
        return offset;
    }
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override {
        return answers_.interfaceAddresses = calls_.ReadInterfaceAddresses();
    }
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const override {
        const auto space = calls_.ReadFileSystemSpace(mountPoint);
        if (space) {
            answers_.fileSystemSpaces[std::string(mountPoint)] = *space;
        }
        return space;
    }

    /// Returns the answers of the calls so far.
    const TCaptureAnswers& GetAnswers() const { return answers_; }

  private:
    const ISystemCalls& calls_;
    mutable TCaptureAnswers answers_;  // calls are const: they change the recording only
};

}  // namespace NVORHOST
