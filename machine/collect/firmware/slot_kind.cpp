#include "machine/collect/firmware/slot_kind.h"

#include "text/find_row.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

// CIM_PhysicalConnector.ConnectorLayout.
constexpr std::uint16_t unknown = 0;
constexpr std::uint16_t other = 1;
constexpr std::uint16_t slot = 7;
constexpr std::uint16_t pci = 16;
constexpr std::uint16_t pciX = 17;
constexpr std::uint16_t pciExpress = 18;
constexpr std::uint16_t x1 = 19;
constexpr std::uint16_t x2 = 20;
constexpr std::uint16_t x4 = 21;
constexpr std::uint16_t x8 = 22;
constexpr std::uint16_t x16 = 23;
constexpr std::uint16_t x32 = 24;

// Columns of the table below.
constexpr auto cardEdge = ESlotConnector::cardEdge;
constexpr auto socket = ESlotConnector::socket;
constexpr auto numbered = ESlotNumber::given;
constexpr auto plain = ESlotNumber::none;
constexpr std::optional<bool> special = true;
constexpr std::optional<bool> general = false;
constexpr std::optional<bool> open = std::nullopt;

// Sorted by code. DSP0134, 7.10.1 and 7.10.5.
// clang-format off
constexpr TSlotKind slotKinds[] = {
    {0x01, "",                      other,      socket,   plain,    open},
    {0x02, "",                      unknown,    socket,   plain,    open},
    {0x03, "ISA",                   slot,       cardEdge, plain,    general},
    {0x04, "MCA",                   slot,       cardEdge, numbered, general},
    {0x05, "EISA",                  slot,       cardEdge, numbered, general},
    {0x06, "PCI",                   pci,        cardEdge, numbered, general},
    {0x07, "PC Card",               slot,       socket,   plain,    general},
    {0x08, "VESA local bus",        slot,       cardEdge, plain,    general},
    {0x09, "Proprietary",           other,      socket,   plain,    special},
    {0x0A, "Processor card",        other,      socket,   plain,    special},
    {0x0B, "Proprietary memory card", other,      socket,   plain,    special},
    {0x0C, "I/O riser card",        other,      socket,   plain,    special},
    {0x0D, "NuBus",                 slot,       socket,   plain,    general},
    {0x0E, "PCI 66 MHz",            pci,        cardEdge, numbered, general},
    {0x0F, "AGP",                   slot,       cardEdge, numbered, general},
    {0x10, "AGP 2x",                slot,       cardEdge, numbered, general},
    {0x11, "AGP 4x",                slot,       cardEdge, numbered, general},
    {0x12, "PCI-X",                 pciX,       cardEdge, numbered, general},
    {0x13, "AGP 8x",                slot,       cardEdge, numbered, general},
    {0x14, "M.2 Socket 1-DP",       other,      socket,   numbered, general},
    {0x15, "M.2 Socket 1-SD",       other,      socket,   numbered, general},
    {0x16, "M.2 Socket 2",          other,      socket,   numbered, general},
    {0x17, "M.2 Socket 3",          other,      socket,   numbered, general},
    {0x18, "MXM Type I",            other,      socket,   plain,    general},
    {0x19, "MXM Type II",           other,      socket,   plain,    general},
    {0x1A, "MXM Type III",          other,      socket,   plain,    general},
    {0x1B, "MXM Type III-HE",       other,      socket,   plain,    general},
    {0x1C, "MXM Type IV",           other,      socket,   plain,    general},
    {0x1D, "MXM 3.0 Type A",        other,      socket,   plain,    general},
    {0x1E, "MXM 3.0 Type B",        other,      socket,   plain,    general},
    {0x1F, "PCI Express 2 U.2",     other,      socket,   numbered, general},
    {0x20, "PCI Express 3 U.2",     other,      socket,   numbered, general},
    {0x21, "PCI Express Mini 52-pin with bottom-side keep-outs", other,      socket,   plain,    general},
    {0x22, "PCI Express Mini 52-pin without bottom-side keep-outs", other,      socket,   plain,    general},
    {0x23, "PCI Express Mini 76-pin", other,      socket,   plain,    general},
    {0x24, "PCI Express 4 U.2",     other,      socket,   numbered, general},
    {0x25, "PCI Express 5 U.2",     other,      socket,   numbered, general},
    {0x26, "OCP NIC 3.0 small form factor", other,      socket,   numbered, general},
    {0x27, "OCP NIC 3.0 large form factor", other,      socket,   numbered, general},
    {0x28, "OCP NIC before 3.0",    other,      socket,   numbered, general},
    {0x30, "CXL Flexbus 1.0",       other,      socket,   plain,    general},
    {0xA0, "PC-98/C20",             other,      socket,   plain,    general},
    {0xA1, "PC-98/C24",             other,      socket,   plain,    general},
    {0xA2, "PC-98/E",               other,      socket,   plain,    general},
    {0xA3, "PC-98/Local Bus",       other,      socket,   plain,    general},
    {0xA4, "PC-98/Card",            other,      socket,   plain,    general},
    {0xA5, "PCI Express",           pciExpress, cardEdge, numbered, general},
    {0xA6, "PCI Express x1",        x1,         cardEdge, numbered, general},
    {0xA7, "PCI Express x2",        x2,         cardEdge, numbered, general},
    {0xA8, "PCI Express x4",        x4,         cardEdge, numbered, general},
    {0xA9, "PCI Express x8",        x8,         cardEdge, numbered, general},
    {0xAA, "PCI Express x16",       x16,        cardEdge, numbered, general},
    {0xAB, "PCI Express 2",         pciExpress, cardEdge, numbered, general},
    {0xAC, "PCI Express 2 x1",      x1,         cardEdge, numbered, general},
    {0xAD, "PCI Express 2 x2",      x2,         cardEdge, numbered, general},
    {0xAE, "PCI Express 2 x4",      x4,         cardEdge, numbered, general},
    {0xAF, "PCI Express 2 x8",      x8,         cardEdge, numbered, general},
    {0xB0, "PCI Express 2 x16",     x16,        cardEdge, numbered, general},
    {0xB1, "PCI Express 3",         pciExpress, cardEdge, numbered, general},
    {0xB2, "PCI Express 3 x1",      x1,         cardEdge, numbered, general},
    {0xB3, "PCI Express 3 x2",      x2,         cardEdge, numbered, general},
    {0xB4, "PCI Express 3 x4",      x4,         cardEdge, numbered, general},
    {0xB5, "PCI Express 3 x8",      x8,         cardEdge, numbered, general},
    {0xB6, "PCI Express 3 x16",     x16,        cardEdge, numbered, general},
    {0xB8, "PCI Express 4",         pciExpress, cardEdge, numbered, general},
    {0xB9, "PCI Express 4 x1",      x1,         cardEdge, numbered, general},
    {0xBA, "PCI Express 4 x2",      x2,         cardEdge, numbered, general},
    {0xBB, "PCI Express 4 x4",      x4,         cardEdge, numbered, general},
    {0xBC, "PCI Express 4 x8",      x8,         cardEdge, numbered, general},
    {0xBD, "PCI Express 4 x16",     x16,        cardEdge, numbered, general},
    {0xBE, "PCI Express 5",         pciExpress, cardEdge, numbered, general},
    {0xBF, "PCI Express 5 x1",      x1,         cardEdge, numbered, general},
    {0xC0, "PCI Express 5 x2",      x2,         cardEdge, numbered, general},
    {0xC1, "PCI Express 5 x4",      x4,         cardEdge, numbered, general},
    {0xC2, "PCI Express 5 x8",      x8,         cardEdge, numbered, general},
    {0xC3, "PCI Express 5 x16",     x16,        cardEdge, numbered, general},
    {0xC4, "PCI Express 6 or later", pciExpress, cardEdge, numbered, general},
    {0xC5, "EDSFF E1",              other,      socket,   numbered, general},
    {0xC6, "EDSFF E3",              other,      socket,   numbered, general},
};
// clang-format on

struct TCodeValue {
    std::uint8_t code;
    std::uint16_t value;
};

// DSP0134, 7.10.2; codes from 08h on count lanes, not bits.
constexpr TCodeValue dataWidths[] = {
    {0x01, 1}, {0x02, 0}, {0x03, 8}, {0x04, 16}, {0x05, 32}, {0x06, 64}, {0x07, 128},
    {0x08, 1}, {0x09, 1}, {0x0A, 1}, {0x0B, 1},  {0x0C, 1},  {0x0D, 1},  {0x0E, 1},
};

// DSP0134, 7.10.2: widths in lanes. CIM has no layout for twelve lanes.
constexpr TCodeValue expressLayouts[] = {
    {0x08, x1}, {0x09, x2}, {0x0A, x4}, {0x0B, x8}, {0x0D, x16}, {0x0E, x32},
};

struct TUsage {
    std::uint8_t code;
    std::string_view name;
};

constexpr TUsage usages[] = {{0x03, "available"}, {0x04, "in use"}, {0x05, "unavailable"}};

}  // namespace

const TSlotKind* FindSlotKind(std::uint8_t code) {
    const auto* const row = std::ranges::lower_bound(slotKinds, code, {}, &TSlotKind::code);
    return row != std::end(slotKinds) && row->code == code ? row : nullptr;
}

std::optional<std::uint16_t> FindMaxDataWidth(std::uint8_t code) {
    return FindCell(dataWidths, &TCodeValue::code, code, &TCodeValue::value);
}

std::optional<std::uint16_t> FindExpressLayout(std::uint8_t widthCode) {
    return FindCell(expressLayouts, &TCodeValue::code, widthCode, &TCodeValue::value);
}

std::optional<std::string_view> FindSlotUsage(std::uint8_t code) {
    return FindCell(usages, &TUsage::code, code, &TUsage::name);
}

}  // namespace NVORHOST
