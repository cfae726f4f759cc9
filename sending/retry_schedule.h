// How long a sender waits before it tries again.
#pragma once

#include <chrono>

namespace NVORHOST {

/// Returns the delay after `failures` consecutive failures, of which there is at least one: 1 second, doubled
/// with each further failure up to 64 seconds, of which at most half is taken off by chance. `share` is that
/// chance, from 0 to 1: it spreads the machines that a server has turned away at one moment.
std::chrono::milliseconds GetRetryDelay(int failures, double share);

}  // namespace NVORHOST
