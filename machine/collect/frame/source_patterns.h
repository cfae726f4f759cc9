// What a collector reads, stated as patterns of paths: shown to people, and held against the accesses of real
// runs by a test.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// One path as on the machine, for example "/sys/block/*/size", with the stars of `MatchesPathPattern`. A
/// folder stands for its list of names, a link for its target.
using TSourcePattern = std::string_view;

/// Two lists of patterns one behind the other, for collectors that need what another one reads as well.
template <std::size_t first, std::size_t second>
constexpr std::array<TSourcePattern, first + second> Join(const std::array<TSourcePattern, first>& a,
                                                          const std::array<TSourcePattern, second>& b) {
    std::array<TSourcePattern, first + second> joined{};
    std::size_t place = 0;
    for (const TSourcePattern pattern : a) {
        joined[place++] = pattern;
    }
    for (const TSourcePattern pattern : b) {
        joined[place++] = pattern;
    }
    return joined;
}

/// The structure table of the firmware.
inline constexpr std::array<TSourcePattern, 2> smbiosSources{
    "/sys/firmware/dmi/tables/DMI",
    "/sys/firmware/dmi/tables/smbios_entry_point",
};

}  // namespace NVORHOST
