// Slot types of the SMBIOS reference: their names, and what CIM says of slots of each.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

enum class ESlotConnector { cardEdge, socket };
enum class ESlotNumber { given, none };

/// What the slot type tells; codes without a row tell nothing.
struct TSlotKind {
    std::uint8_t code;                   ///< SMBIOS type 9, 05h
    std::string_view name;               ///< empty for Other and Unknown
    std::uint16_t connectorLayout;       ///< CIM_PhysicalConnector.ConnectorLayout
    ESlotConnector connector;            ///< cardEdge: the card's edge goes into it, so that it is female
    ESlotNumber number;                  ///< given: 09h holds the number of the slot
    std::optional<bool> specialPurpose;  ///< CIM_Slot.SpecialPurpose; absent for Other and Unknown
};

/// Null for codes that the reference does not list.
const TSlotKind* FindSlotKind(std::uint8_t code);

/// CIM_Slot.MaxDataWidth in bits, 0 unknown, 1 other (lanes are no bits), of the code at 06h. Absent for
/// codes that the reference does not list.
std::optional<std::uint16_t> FindMaxDataWidth(std::uint8_t code);

/// The ConnectorLayout of a PCI Express slot whose type leaves the size open, from the code of its physical
/// width. Absent for widths that CIM does not list.
std::optional<std::uint16_t> FindExpressLayout(std::uint8_t widthCode);

/// "available", "in use" or "unavailable" of the code at 07h; empty for others.
std::string_view GetSlotUsageName(std::uint8_t code);

}  // namespace NVORHOST
