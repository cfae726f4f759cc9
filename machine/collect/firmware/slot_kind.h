// Slot types of SMBIOS: their names and the CIM properties that follow from the type.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

enum class ESlotConnector { cardEdge, socket };
enum class ESlotNumber { given, none };

struct TSlotKind {
    std::uint8_t code;                   ///< SMBIOS type 9, 05h
    std::string_view name;               ///< empty for Other and Unknown
    std::uint16_t connectorLayout;       ///< CIM_PhysicalConnector.ConnectorLayout
    ESlotConnector connector;            ///< cardEdge: takes the edge of a card, so the connector is female
    ESlotNumber number;                  ///< given: 09h holds the number of the slot
    std::optional<bool> specialPurpose;  ///< CIM_Slot.SpecialPurpose; absent for Other and Unknown
};

/// Returns the row of a slot type; null for a code that DSP0134 does not list.
const TSlotKind* FindSlotKind(std::uint8_t code);

/// Maps the data width at 06h to CIM_Slot.MaxDataWidth in bits, 0 for unknown and 1 for other, which includes
/// widths in lanes; nullopt for a code that DSP0134 does not list.
std::optional<std::uint16_t> FindMaxDataWidth(std::uint8_t code);

/// Maps the physical width of a PCI Express slot whose type leaves the size open to a ConnectorLayout;
/// nullopt for a width that CIM does not list.
std::optional<std::uint16_t> FindExpressLayout(std::uint8_t widthCode);

/// Maps the usage at 07h to "available", "in use" or "unavailable"; nullopt for any other code.
std::optional<std::string_view> FindSlotUsage(std::uint8_t code);

}  // namespace NVORHOST
