// Makes the system calls that may block observable, like the accesses to files in watched_files.h.
#pragma once

#include "machine/system/system_calls.h"
#include "machine/system/watched_files.h"

namespace NVORHOST {

class TWatchedSystemCalls final : public ISystemCalls {
  public:
    /// A call for a path in `unanswered` returns nullopt at once. `calls`, `place` and `unanswered` must
    /// outlive this object.
    TWatchedSystemCalls(const ISystemCalls& calls, TAccessPlace& place, const TUnansweredPaths& unanswered)
        : calls_(calls), place_(place), unanswered_(unanswered) {}

    std::optional<std::string> ReadKernelRelease() const override { return calls_.ReadKernelRelease(); }
    std::optional<std::string> ReadNodeName() const override { return calls_.ReadNodeName(); }
    std::optional<std::string> ReadArchitecture() const override { return calls_.ReadArchitecture(); }
    std::optional<std::uint32_t> ReadPageSizeBytes() const override { return calls_.ReadPageSizeBytes(); }
    std::optional<std::uint32_t> ReadClockTicksPerSecond() const override {
        return calls_.ReadClockTicksPerSecond();
    }
    std::optional<std::string> ReadHypervisorSignature() const override {
        return calls_.ReadHypervisorSignature();
    }
    std::optional<int> ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const override {
        return calls_.ReadUtcOffsetMinutes(secondsSinceEpoch);
    }
    std::optional<std::vector<TInterfaceAddress>> ReadInterfaceAddresses() const override {
        return calls_.ReadInterfaceAddresses();
    }
    std::optional<TFileSystemSpace> ReadFileSystemSpace(std::string_view mountPoint) const override {
        if (unanswered_.contains(mountPoint)) {
            timedOut_.emplace(mountPoint);
            return std::nullopt;
        }
        const TAccessUnderWay underWay(place_, mountPoint);
        return calls_.ReadFileSystemSpace(mountPoint);
    }

    /// Returns the unanswered paths for which a call was repeated so far.
    const TUnansweredPaths& GetTimedOut() const { return timedOut_; }

  private:
    const ISystemCalls& calls_;
    TAccessPlace& place_;
    const TUnansweredPaths& unanswered_;
    mutable TUnansweredPaths timedOut_;  // reading is const: it does not change the machine
};

}  // namespace NVORHOST
