// Ratios of times that are stable on a busy machine: both sides are measured alternately in processor time,
// and the best run of each counts.
#pragma once

#include <algorithm>
#include <ctime>
#include <limits>

/// Returns the processor time of `work` on this thread, user and system, in seconds.
template <typename TWork>
double CpuSeconds(TWork work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        constexpr double nanosecond = 1e-9;
        return static_cast<double>(time.tv_sec) + nanosecond * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

/// The shortest of the times added, in seconds.
class TBestTime {
  public:
    void Add(double seconds) { seconds_ = std::min(seconds_, seconds); }
    double GetSeconds() const { return seconds_; }

  private:
    double seconds_ = std::numeric_limits<double>::infinity();
};
