// The position of a process in its accesses to the machine, in shared memory that another process reads: an
// access that never returns cannot report itself.
#pragma once

#include <array>
#include <atomic>
#include <climits>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Written by one process, read by others. All zeros is a valid state: no task, no access under way.
class TAccessPlace {
  public:
    /// Sets the number of the task that the process works on, 0-based.
    void EnterTask(std::uint32_t number) {
        taskAfter_.store(number + 1, std::memory_order_relaxed);
        Step();
    }
    /// Starts an access. Paths longer than PATH_MAX are truncated.
    void EnterAccess(std::string_view path);
    void LeaveAccess() {
        length_.store(0, std::memory_order_relaxed);
        Step();
    }

    /// Returns a counter that every start and end of an access and every task increments.
    std::uint32_t GetStep() const { return step_.load(std::memory_order_acquire); }
    /// True after the first task was entered.
    bool HasTask() const { return taskAfter_.load(std::memory_order_relaxed) != 0; }
    std::uint32_t GetTask() const { return taskAfter_.load(std::memory_order_relaxed) - 1; }
    /// Returns the path of the access under way; nullopt if there is none. Valid only if GetStep returns the
    /// same value before and after the call.
    std::optional<std::string> FindPath() const;

  private:
    void Step() { step_.fetch_add(1, std::memory_order_release); }

    std::atomic<std::uint32_t> step_;
    std::atomic<std::uint32_t> taskAfter_;  // number of the task plus 1; 0 before the first task
    std::atomic<std::uint32_t> length_;     // length of the path; 0 without an access
    std::array<char, PATH_MAX> path_;
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");
};

/// Enters an access for the lifetime of this object.
class TAccessUnderWay {
  public:
    TAccessUnderWay(TAccessPlace& place, std::string_view path) : place_(place) { place_.EnterAccess(path); }
    ~TAccessUnderWay() { place_.LeaveAccess(); }
    TAccessUnderWay(const TAccessUnderWay&) = delete;
    TAccessUnderWay& operator=(const TAccessUnderWay&) = delete;

  private:
    TAccessPlace& place_;
};

}  // namespace NVORHOST
