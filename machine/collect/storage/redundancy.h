// CIM's two counts of redundancy: how much a volume may lose before data is lost.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

struct TRedundancy {
    std::optional<std::uint16_t> dataCopies;  ///< CIM DataRedundancy: complete copies of the data
    /// CIM PackageRedundancy: disks that may fail without data loss.
    std::optional<std::uint16_t> sparePackages;

    bool operator==(const TRedundancy&) const = default;
};

/// Redundancy of a single disk.
inline constexpr TRedundancy diskRedundancy{std::uint16_t{1}, std::uint16_t{0}};

/// An array as its driver describes it.
struct TArrayShape {
    std::string_view level;                    ///< as in md/level and the kernel's RAID class: "raid1"
    std::optional<std::uint32_t> disks;        ///< disks in use, without spares
    std::optional<std::uint32_t> degraded;     ///< disks in use that are missing or not yet in sync
    std::optional<std::uint32_t> layout = {};  ///< md's layout code, needed for raid10
};

/// Returns the redundancy of an array whose members are separate disks. A count that the level does not
/// determine is absent; both are absent for an unknown level.
/// Source: kernel documentation, admin-guide/md.rst.
TRedundancy FindArrayRedundancy(const TArrayShape& shape);

/// Returns the redundancy of a volume that spans both: the lower of each count; absent if either is unknown.
TRedundancy Weakest(const TRedundancy& first, const TRedundancy& second);

}  // namespace NVORHOST
