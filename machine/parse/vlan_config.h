// Parses /proc/net/vlan/config: the VLANs of the machine. Only root can read it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// Returns the VLAN id of the interface `name`, 1 to 4094; nullopt for a malformed line and without one.
/// Shape:  two header lines, then "eth0.5         | 5  | eth0".
/// Source: Linux, net/8021q/vlanproc.c.
std::optional<std::uint16_t> FindVlanId(std::string_view text, std::string_view name);

}  // namespace NVORHOST
