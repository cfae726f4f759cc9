// The number of repetitions of tests for races: few in the normal suite, more with tools/endurance.
#pragma once

#include <algorithm>
#include <cstdlib>

namespace NVORHOST {

/// Returns the larger one of `usual` and the environment variable NOXINFO_ROUNDS.
inline int Rounds(int usual) {
    const char* const wanted = std::getenv("NOXINFO_ROUNDS");  // NOLINT(concurrency-mt-unsafe): never changed
    return wanted == nullptr ? usual : std::max(usual, static_cast<int>(std::strtol(wanted, nullptr, 10)));
}

}  // namespace NVORHOST
