// Names of PCI classes.
#pragma once

#include <cstdint>
#include <string_view>

namespace NVORHOST {

/// Returns the name of a base class and subclass, such as "Ethernet controller"; the name of the base class
/// if the subclass is not listed; "PCI device" if neither is.
/// Source: PCI-SIG, PCI Code and ID Assignment.
std::string_view GetPciClassName(std::uint8_t baseClass, std::uint8_t subclass);

}  // namespace NVORHOST
