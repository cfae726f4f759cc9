#include "sending/retry_schedule.h"

#include <algorithm>

namespace NVORHOST {

std::chrono::milliseconds GetRetryDelay(int failures, double share) {
    constexpr int lastDoubling = 6;
    constexpr std::chrono::milliseconds first(1000);
    const auto longest = first * (1 << std::clamp(failures - 1, 0, lastDoubling));
    const double part = 1 - std::clamp(share, 0.0, 1.0) / 2;
    return std::chrono::milliseconds(
        static_cast<std::chrono::milliseconds::rep>(static_cast<double>(longest.count()) * part));
}

}  // namespace NVORHOST
