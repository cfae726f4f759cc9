// The sources of a collector as patterns of paths. Listings show them, and a test compares them with the
// accesses of real runs.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// A path with the wildcards of MatchesPathPattern, such as "/sys/block/*/size". The path of a folder covers
/// listing it, the path of a link covers reading its target.
using TSourcePattern = std::string_view;

/// Concatenates two lists of patterns, for a collector that also uses a shared source.
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

/// The SMBIOS table.
inline constexpr std::array<TSourcePattern, 2> smbiosSources{
    "/sys/firmware/dmi/tables/DMI",
    "/sys/firmware/dmi/tables/smbios_entry_point",
};

}  // namespace NVORHOST
