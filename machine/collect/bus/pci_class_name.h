// What the class code of a PCI function says in words.
#pragma once

#include <cstdint>
#include <string_view>

namespace NVORHOST {

/// The words for base class and subclass, such as "Ethernet controller"; those for the base class alone when
/// the subclass is not listed; "PCI device" when neither is.
/// Source: PCI-SIG, PCI Code and ID Assignment.
std::string_view GetPciClassName(std::uint8_t baseClass, std::uint8_t subclass);

}  // namespace NVORHOST
