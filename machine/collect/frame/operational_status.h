// Maps states that the kernel or the firmware reports to CIM operational status.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Never empty; the first element is the primary status.
using TOperationalStatus = std::vector<std::uint16_t>;

inline constexpr std::uint16_t statusOk = 2;
inline constexpr std::uint16_t statusStopped = 10;

/// Maps a SCSI or NVMe `state` attribute; nullopt for an unknown word.
std::optional<TOperationalStatus> FindDiskStatus(std::string_view state);

/// Maps the `operstate` of a network interface (the kernel's words for RFC 2863); nullopt for an unknown
/// word.
std::optional<TOperationalStatus> FindInterfaceStatus(std::string_view state);

/// Maps the `state` of a volume in the kernel's RAID class; nullopt for an unknown word.
std::optional<TOperationalStatus> FindRaidVolumeStatus(std::string_view state);

/// Maps `array_state` and `sync_action` of an md array; nullopt for an unknown state. A running array is
/// degraded if it has lost disks, and additionally in service while it resynchronises. An array that is not
/// running is stopped.
std::optional<TOperationalStatus> FindArrayStatus(std::string_view arrayState, std::uint32_t degraded,
                                                  std::string_view syncAction);

/// Maps bits 2:0 of the status of an SMBIOS processor structure, which is the state at boot; nullopt for
/// reserved codes.
std::optional<TOperationalStatus> FindProcessorStatus(std::uint8_t status);

/// Maps the worst state of an SMBIOS chassis structure to a CIM status. "Unknown" is ignored if another state
/// is present. Returns nullopt if all states are absent or reserved.
std::optional<TOperationalStatus> FindChassisStatus(const std::vector<std::optional<std::uint8_t>>& states);

}  // namespace NVORHOST
