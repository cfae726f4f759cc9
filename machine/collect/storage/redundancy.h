// How much a volume may lose before data is lost: CIM's two counts of redundancy.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

struct TRedundancy {
    std::optional<std::uint16_t> dataCopies;     ///< CIM DataRedundancy: complete copies of the data
    std::optional<std::uint16_t> sparePackages;  ///< CIM PackageRedundancy: disks that may fail without loss
};

/// That of a single disk.
inline constexpr TRedundancy diskRedundancy{std::uint16_t{1}, std::uint16_t{0}};

/// An array as its driver describes it.
struct TArrayShape {
    std::string_view level;                    ///< "raid1", as of md/level and of the kernel's RAID class
    std::optional<std::uint32_t> disks;        ///< that the level is spread over, spare ones not counted
    std::optional<std::uint32_t> degraded;     ///< how many of these are missing or not yet in step
    std::optional<std::uint32_t> layout = {};  ///< md's code, needed for raid10
};

/// From the level, as long as each member is a disk of its own. Counts that the level does not settle are
/// absent; both are for a level that is not known.
/// Source: kernel documentation, admin-guide/md.rst.
TRedundancy FindArrayRedundancy(const TArrayShape& shape);

/// Of a volume that lies across both: the weaker one counts, and an unknown one leaves it unknown.
TRedundancy Weakest(const TRedundancy& first, const TRedundancy& second);

}  // namespace NVORHOST
