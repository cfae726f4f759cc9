// RAID adapters by the driver that serves them: which of the units on their hosts are volumes, and which
// class of logical disks these belong to.
#pragma once

#include <optional>
#include <string_view>

namespace NVORHOST {

/// Whose adapter made a volume, as far as there are classes for it.
enum class ERaidFamily {
    none,    ///< no volume of an adapter
    lsi,     ///< LSI: MegaRAID and the integrated RAID of Fusion-MPT
    lsiIde,  ///< LSI, adapters that take ATA disks alone
    sr,      ///< adapters of the drivers ips and aacraid
    other,   ///< adapters without a class of their own
};

/// What the unit at a SCSI address is. Absent when neither the driver nor the channel makes it a volume: a
/// disk, perhaps one that the adapter passes through.
/// `address` is "host:channel:target:unit".
std::optional<ERaidFamily> FindRaidVolume(std::string_view hostDriver, std::string_view address);

/// The family of the adapters that a driver serves, for units that are known to be volumes.
ERaidFamily FindRaidFamily(std::string_view hostDriver);

}  // namespace NVORHOST
