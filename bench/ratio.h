// Ratios that hold on a busy machine: both sides are measured in turn, in processor time, and the best run of
// each counts.
#pragma once

#include <algorithm>
#include <ctime>
#include <limits>

/// Seconds of processor time, user and system, that `work` takes on this thread.
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

/// The shortest of the times it was given, in seconds.
class TBestTime {
  public:
    void Add(double seconds) { seconds_ = std::min(seconds_, seconds); }
    double GetSeconds() const { return seconds_; }

  private:
    double seconds_ = std::numeric_limits<double>::infinity();
};
