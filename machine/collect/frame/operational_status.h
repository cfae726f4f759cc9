// The kernel's and the firmware's words for the state of a device as CIM operational status.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Always an array; its first element is the primary status.
using TOperationalStatus = std::vector<std::uint16_t>;

inline constexpr std::uint16_t statusOk = 2;
inline constexpr std::uint16_t statusStopped = 10;

/// Of the state of a SCSI disk or an NVMe controller. Absent for a word that neither driver has.
std::optional<TOperationalStatus> FindDiskStatus(std::string_view state);

/// Of the operstate of a network interface (RFC 2863, as the kernel writes it). Absent for another word.
std::optional<TOperationalStatus> FindInterfaceStatus(std::string_view state);

/// Of the state of a RAID adapter's volume. Absent for a word that the kernel's RAID class does not have.
std::optional<TOperationalStatus> FindRaidVolumeStatus(std::string_view state);

/// Of an md array from its array_state and sync_action. One that has lost disks is degraded, one whose disks
/// are brought in step is in service besides; an array that does not run is stopped whatever else it says.
std::optional<TOperationalStatus> FindArrayStatus(std::string_view arrayState, std::uint32_t degraded,
                                                  std::string_view syncAction);

/// Maps the status of an SMBIOS processor structure (bits 2:0), the state at the start. Absent for reserved
/// codes.
std::optional<TOperationalStatus> FindProcessorStatus(std::uint8_t status);

/// The worst of the states that an SMBIOS chassis structure gives; "unknown" only when no other answers, and
/// nothing when none does.
std::optional<TOperationalStatus> FindChassisStatus(const std::vector<std::optional<std::uint8_t>>& states);

}  // namespace NVORHOST
