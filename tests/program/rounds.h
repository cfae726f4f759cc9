// How often a test repeats a race: a few times in the normal suite, as often as asked for with
// tools/endurance.
#pragma once

#include <algorithm>
#include <cstdlib>

namespace NVORHOST {

/// Returns `usual`, or the number in the environment variable NOXINFO_ROUNDS when that is larger.
inline int Rounds(int usual) {
    const char* const wanted = std::getenv("NOXINFO_ROUNDS");  // NOLINT(concurrency-mt-unsafe): never changed
    return wanted == nullptr ? usual : std::max(usual, std::atoi(wanted));
}

}  // namespace NVORHOST
