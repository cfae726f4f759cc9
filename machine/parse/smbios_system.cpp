#include "machine/parse/smbios_system.h"

#include "text/ascii.h"
#include "text/find_row.h"
#include "text/hex.h"

#include <algorithm>

namespace NVORHOST {
namespace {

constexpr std::size_t uuidSize = 16;

// The index of each byte of the canonical text, from version 2.6 on and before.
constexpr std::uint8_t littleEndianOrder[uuidSize] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr std::uint8_t storedOrder[uuidSize] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

constexpr std::string_view placeholderUuids[] = {
    "00000000-0000-0000-0000-000000000000", "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF",
    "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
    "12345678-1234-5678-90AB-CDDEEFAABBCC", "FEFEFEFE-FEFE-FEFE-FEFE-FEFEFEFEFEFE",
};

struct TChassisKind {
    std::uint8_t code;
    std::string_view name;
};

// DSP0134, 7.4.1. 01h Other and 02h Unknown are left out.
constexpr TChassisKind chassisKinds[] = {
    {0x03, "Desktop"},
    {0x04, "Low Profile Desktop"},
    {0x05, "Pizza Box"},
    {0x06, "Mini Tower"},
    {0x07, "Tower"},
    {0x08, "Portable"},
    {0x09, "Laptop"},
    {0x0A, "Notebook"},
    {0x0B, "Hand Held"},
    {0x0C, "Docking Station"},
    {0x0D, "All in One"},
    {0x0E, "Sub Notebook"},
    {0x0F, "Space-saving"},
    {0x10, "Lunch Box"},
    {0x11, "Main Server Chassis"},
    {0x12, "Expansion Chassis"},
    {0x13, "SubChassis"},
    {0x14, "Bus Expansion Chassis"},
    {0x15, "Peripheral Chassis"},
    {0x16, "RAID Chassis"},
    {0x17, "Rack Mount Chassis"},
    {0x18, "Sealed-case PC"},
    {0x19, "Multi-system chassis"},
    {0x1A, "Compact PCI"},
    {0x1B, "Advanced TCA"},
    {0x1C, "Blade"},
    {0x1D, "Blade Enclosure"},
    {0x1E, "Tablet"},
    {0x1F, "Convertible"},
    {0x20, "Detachable"},
    {0x21, "IoT Gateway"},
    {0x22, "Embedded PC"},
    {0x23, "Mini PC"},
    {0x24, "Stick PC"},
};

}  // namespace

bool IsPlaceholderUuid(std::string_view uuid) {
    return std::ranges::any_of(placeholderUuids, [uuid](std::string_view placeholder) {
        return EqualIgnoringCase(uuid, placeholder);
    });
}

std::optional<std::string> FormatSmbiosUuid(std::string_view bytes, TSmbiosVersion version) {
    if (bytes.size() != uuidSize) {
        return std::nullopt;
    }
    const auto& order = version >= TSmbiosVersion{2, 6} ? littleEndianOrder : storedOrder;
    std::string text;
    for (std::size_t i = 0; i < uuidSize; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += ToHex(bytes.substr(order[i], 1), EHexCase::upper);
    }
    return IsPlaceholderUuid(text) ? std::nullopt : std::optional(text);
}

TSmbiosFirmware ParseSmbiosFirmware(const TSmbiosStructure& structure) {
    constexpr unsigned isVirtualMachine = 0x10;
    return {.isVirtualMachine = (structure.GetFields().GetByte(0x13).value_or(0) & isVirtualMachine) != 0};
}

TSmbiosSystem ParseSmbiosSystem(const TSmbiosStructure& structure, std::optional<TSmbiosVersion> version) {
    const auto uuid = structure.GetFields().GetRange(0x08, uuidSize);
    return {
        .manufacturer = structure.GetText(0x04),
        .product = structure.GetText(0x05),
        .version = structure.GetText(0x06),
        .serial = structure.GetText(0x07),
        .uuid = uuid && version ? FormatSmbiosUuid(*uuid, *version) : std::nullopt,
    };
}

TSmbiosBoard ParseSmbiosBoard(const TSmbiosStructure& structure) {
    return {
        .manufacturer = structure.GetText(0x04),
        .product = structure.GetText(0x05),
        .version = structure.GetText(0x06),
        .serial = structure.GetText(0x07),
        .assetTag = structure.GetText(0x08),
        .features = structure.GetFields().GetByte(0x09),
        .location = structure.GetText(0x0A),
        .kind = structure.GetFields().GetByte(0x0D),
    };
}

TSmbiosChassis ParseSmbiosChassis(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    TSmbiosChassis chassis{
        .kind = fields.GetByte(0x05),
        .serial = structure.GetText(0x07),
        .bootUpState = fields.GetByte(0x09),
        .powerState = fields.GetByte(0x0A),
        .thermalState = fields.GetByte(0x0B),
    };
    if (chassis.kind) {
        *chassis.kind &= 0x7F;  // bit 7 is set for a chassis with a lock
    }
    return chassis;
}

std::optional<std::string_view> FindChassisKindName(std::uint8_t kind) {
    return FindCell(chassisKinds, &TChassisKind::code, kind, &TChassisKind::name);
}

}  // namespace NVORHOST
