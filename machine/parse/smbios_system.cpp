#include "machine/parse/smbios_system.h"

#include "text/ascii.h"
#include "text/find_row.h"
#include "text/hex.h"
#include "text/numbers.h"

#include <algorithm>
#include <chrono>

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

std::optional<std::string> ReadRelease(const TByteView& fields, std::size_t offset) {
    constexpr std::uint8_t none = 0xFF;
    const auto major = fields.GetByte(offset);
    const auto minor = fields.GetByte(offset + 1);
    if (!major || !minor || *major == none || *minor == none) {
        return std::nullopt;
    }
    return std::to_string(*major) + "." + std::to_string(*minor);
}

// Two digits are a year of the last century, because later firmware writes four.
std::optional<std::uint16_t> ParseYear(std::string_view digits) {
    constexpr std::uint16_t century = 1900;
    constexpr std::uint16_t firstShortYear = 80;
    const auto year = ParseNumber<std::uint16_t>(digits);
    if (!year || digits.size() == 4) {
        return year;
    }
    return *year >= firstShortYear ? std::optional(static_cast<std::uint16_t>(century + *year))
                                   : std::nullopt;
}

std::optional<std::uint8_t> NonZero(std::optional<std::uint8_t> value) {
    return value == 0 ? std::nullopt : value;
}

// The SKU number follows a list of as many elements as 13h has, each as long as 14h has.
std::optional<std::string> ReadChassisSku(const TSmbiosStructure& structure) {
    constexpr std::size_t elementsOffset = 0x15;
    const auto count = structure.GetFields().GetByte(0x13);
    const auto length = structure.GetFields().GetByte(0x14);
    return count && length ? structure.GetText(elementsOffset + std::size_t{*count} * *length) : std::nullopt;
}

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
    const TByteView& fields = structure.GetFields();
    return {
        .vendor = structure.GetText(0x04),
        .version = structure.GetText(0x05),
        .releaseDate = structure.GetText(0x08),
        .isVirtualMachine = (fields.GetByte(0x13).value_or(0) & isVirtualMachine) != 0,
        .release = ReadRelease(fields, 0x14),
        .controllerRelease = ReadRelease(fields, 0x16),
    };
}

std::optional<TFirmwareDate> ParseFirmwareDate(std::string_view text) {
    constexpr std::size_t shortLength = 8;
    constexpr std::size_t longLength = 10;
    if ((text.size() != shortLength && text.size() != longLength) || text[2] != '/' || text[5] != '/') {
        return std::nullopt;
    }
    const auto month = ParseNumber<std::uint8_t>(text.substr(0, 2));
    const auto day = ParseNumber<std::uint8_t>(text.substr(3, 2));
    const auto year = ParseYear(text.substr(6));
    if (!month || !day || !year) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(*month),
                                           std::chrono::day(*day)};
    return date.ok() ? std::optional(TFirmwareDate{*year, *month, *day}) : std::nullopt;
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
    constexpr std::uint8_t lockBit = 0x80;
    const TByteView& fields = structure.GetFields();
    TSmbiosChassis chassis{
        .manufacturer = structure.GetText(0x04),
        .kind = fields.GetByte(0x05),
        .version = structure.GetText(0x06),
        .serial = structure.GetText(0x07),
        .assetTag = structure.GetText(0x08),
        .bootUpState = fields.GetByte(0x09),
        .powerState = fields.GetByte(0x0A),
        .thermalState = fields.GetByte(0x0B),
        .rackUnits = NonZero(fields.GetByte(0x11)),
        .powerCords = NonZero(fields.GetByte(0x12)),
        .sku = ReadChassisSku(structure),
    };
    if (chassis.kind) {
        chassis.hasLock = (*chassis.kind & lockBit) != 0;
        *chassis.kind &= static_cast<std::uint8_t>(~lockBit);
    }
    return chassis;
}

std::optional<std::string_view> FindChassisKindName(std::uint8_t kind) {
    return FindCell(chassisKinds, &TChassisKind::code, kind, &TChassisKind::name);
}

}  // namespace NVORHOST
