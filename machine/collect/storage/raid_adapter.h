// RAID adapters, identified by their drivers: which units on their hosts are volumes, and the class of
// logical disks that the volumes belong to.
#pragma once

#include <optional>
#include <string_view>

namespace NVORHOST {

/// The family of the adapter that a volume belongs to; each of the named families has a class of logical
/// disks.
enum class ERaidFamily {
    none,    ///< not a volume of an adapter
    lsi,     ///< LSI: MegaRAID and the integrated RAID of Fusion-MPT
    lsiIde,  ///< LSI, adapters for ATA disks only
    sr,      ///< adapters of the drivers ips and aacraid
    other,   ///< adapters without a class of logical disks
};

/// Returns the family of the volume at a SCSI address "host:channel:target:unit"; nullopt if driver and
/// channel do not identify the unit as a volume. It is then a disk, possibly one that the adapter passes
/// through.
std::optional<ERaidFamily> FindRaidVolume(std::string_view hostDriver, std::string_view address);

/// Returns the family of a driver's adapters, for a unit that is known to be a volume; `other` for an unknown
/// driver.
ERaidFamily FindRaidFamily(std::string_view hostDriver);

}  // namespace NVORHOST
