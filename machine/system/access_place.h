// Where a process is in its accesses to the machine, in memory that another process looks at: an access that
// never returns cannot report itself.
#pragma once

#include <array>
#include <atomic>
#include <climits>
#include <cstdint>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Written by one process, read by others. A zeroed one is valid: no task, outside any access.
class TAccessPlace {
  public:
    /// The number of the task that the process works on, from 0 on.
    void EnterTask(std::uint32_t number) {
        taskAfter_.store(number + 1, std::memory_order_relaxed);
        Step();
    }
    /// Longer paths are cut at PATH_MAX.
    void EnterAccess(std::string_view path);
    void LeaveAccess() {
        length_.store(0, std::memory_order_relaxed);
        Step();
    }

    /// Grows with every access that is entered or left, and with every task.
    std::uint32_t GetStep() const { return step_.load(std::memory_order_acquire); }
    /// True once a task was entered.
    bool HasTask() const { return taskAfter_.load(std::memory_order_relaxed) != 0; }
    std::uint32_t GetTask() const { return taskAfter_.load(std::memory_order_relaxed) - 1; }
    /// The path of the access under way, empty outside of any. Meaningful when the step is the same before
    /// and after.
    std::string GetPath() const { return {path_.data(), length_.load(std::memory_order_acquire)}; }

  private:
    void Step() { step_.fetch_add(1, std::memory_order_release); }

    std::atomic<std::uint32_t> step_;
    std::atomic<std::uint32_t> taskAfter_;  // number of the task plus 1; 0 before the first
    std::atomic<std::uint32_t> length_;     // of the path; 0 outside any access
    std::array<char, PATH_MAX> path_;
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");
};

/// Enters an access and leaves it again at the end of the scope.
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
