// Parses the link attributes of PCI Express functions in sysfs: current_link_speed and its like.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// Parses "8.0 GT/s PCIe" or "8 GT/s", as older kernels write it, to megatransfers per second of a lane.
/// Absent: nullopt for "Unknown" and for every speed that PCI Express does not have.
std::optional<std::uint32_t> ParsePciLinkSpeed(std::string_view text);

/// Parses a number of lanes.
/// Absent: nullopt for every number that PCI Express does not have; the kernel writes 0 for a link that is
/// down, and 63 or 255 for unknown.
std::optional<std::uint16_t> ParsePciLinkWidth(std::string_view text);

/// Returns the bits per second that a link moves in one direction, without those of the line code: 8b/10b up
/// to 5 GT/s, 128b/130b up to 32 GT/s, none above, as the kernel computes bandwidths. `speed` is a result of
/// ParsePciLinkSpeed.
std::uint64_t GetPciLinkBandwidth(std::uint32_t speed, std::uint16_t lanes);

}  // namespace NVORHOST
