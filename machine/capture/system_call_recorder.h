// Forwards every system call and records its answer.
#pragma once

#include "machine/replay/capture_answers.h"
#include "machine/system/system_calls.h"

namespace NVORHOST {

class TSystemCallRecorder final : public ISystemCalls {
  public:
    /// `calls` must outlive this object.
    explicit TSystemCallRecorder(const ISystemCalls& calls) : calls_(calls) {}

    std::optional<std::string> KernelRelease() const override {
        return answers_.kernelRelease = calls_.KernelRelease();
    }
    std::optional<std::string> NodeName() const override { return answers_.nodeName = calls_.NodeName(); }
    std::optional<std::string> Architecture() const override {
        return answers_.architecture = calls_.Architecture();
    }
    std::optional<std::uint32_t> PageSizeBytes() const override {
        return answers_.pageSizeBytes = calls_.PageSizeBytes();
    }
    std::optional<std::uint32_t> ClockTicksPerSecond() const override {
        return answers_.clockTicksPerSecond = calls_.ClockTicksPerSecond();
    }
    std::optional<std::string> HypervisorSignature() const override {
        return answers_.hypervisorSignature = calls_.HypervisorSignature();
    }
    std::optional<int> UtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override {
        const auto offset = calls_.UtcOffsetMinutes(secondsSinceEpoch);
        if (offset) {
            answers_.utcOffsetMinutes[secondsSinceEpoch] = *offset;
        }
        return offset;
    }
    std::optional<std::vector<TInterfaceAddress>> InterfaceAddresses() const override {
        return answers_.interfaceAddresses = calls_.InterfaceAddresses();
    }

    /// Returns the answers of the calls so far.
    const TCaptureAnswers& GetAnswers() const { return answers_; }

  private:
    const ISystemCalls& calls_;
    mutable TCaptureAnswers answers_;  // calls are const: they change the recording only
};

}  // namespace NVORHOST
