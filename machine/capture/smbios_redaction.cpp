#include "machine/capture/smbios_redaction.h"

#include "machine/parse/smbios_system.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace NVORHOST {
namespace {

constexpr std::size_t headerSize = 4;

struct TIdentityField {
    std::uint8_t type;
    std::size_t offset;  // offset of the number of the text
    EIdentityKind kind;
};

constexpr auto serial = EIdentityKind::serialNumber;
constexpr auto assetTag = EIdentityKind::assetTag;

// Fields with serial numbers and asset tags. Source: DSP0134.
constexpr TIdentityField identityFields[] = {
    {1, 0x07, serial},                         // system
    {2, 0x07, serial},  {2, 0x08, assetTag},   // baseboard
    {3, 0x07, serial},  {3, 0x08, assetTag},   // chassis
    {4, 0x20, serial},  {4, 0x21, assetTag},   // processor
    {17, 0x18, serial}, {17, 0x19, assetTag},  // memory device
    {22, 0x07, serial},                        // battery
    {39, 0x08, serial}, {39, 0x09, assetTag},  // power supply
};

constexpr std::size_t uuidOffset = 0x08;  // in type 1
constexpr std::size_t uuidSize = 16;

// Fields of type 22: the serial number of a smart battery, and vendor-specific data.
constexpr std::uint8_t batteryType = 22;
constexpr std::size_t batterySerialOffset = 0x10;
constexpr std::size_t batterySerialSize = 2;
constexpr std::size_t batteryOemOffset = 0x16;

// True for free texts of the vendor (11, 12), the management controller with its addresses and credentials
// (42), inactive structures (126), which may have had any type, and vendor-specific structures.
bool IsOpaque(std::uint8_t type) {
    constexpr std::uint8_t firstOfMakers = 128;
    return type == 11 || type == 12 || type == 42 || type == 126 || type >= firstOfMakers;
}

struct TRange {
    std::size_t start = 0;
    std::size_t length = 0;
};

// The offsets of one structure in the table.
struct TPlacedStructure {
    std::uint8_t type = 0;
    TRange fields;
    std::vector<TRange> texts;
    std::size_t end = 0;  // offset after the string set
};

TRange PlaceOf(std::string_view table, std::string_view part) {
    return {static_cast<std::size_t>(part.data() - table.data()), part.size()};
}

TPlacedStructure Place(std::string_view table, const TSmbiosStructure& structure) {
    TPlacedStructure placed;
    placed.type = structure.GetType();
    placed.fields = PlaceOf(table, structure.GetFields().GetBytes());
    for (const std::string_view text : structure.GetTexts()) {
        placed.texts.push_back(PlaceOf(table, text));
    }
    placed.end = placed.fields.start + structure.GetSize();
    return placed;
}

std::vector<TPlacedStructure> PlaceAll(std::string_view table) {
    std::vector<TPlacedStructure> placed;
    for (const TSmbiosStructure& structure : ParseSmbiosTable(table)) {
        placed.push_back(Place(table, structure));
    }
    return placed;
}

struct TIdentityText {
    TRange place;
    EIdentityKind kind = EIdentityKind::serialNumber;
};

// Returns the texts of a structure that are identities, without duplicates.
std::vector<TIdentityText> FindIdentityTexts(std::string_view table, const TPlacedStructure& structure) {
    std::vector<std::optional<EIdentityKind>> kinds(structure.texts.size());
    if (IsOpaque(structure.type)) {
        std::ranges::fill(kinds, EIdentityKind::serialNumber);
    }
    for (const TIdentityField& field : identityFields) {
        if (field.type == structure.type && field.offset < structure.fields.length) {
            const auto number = static_cast<std::uint8_t>(table[structure.fields.start + field.offset]);
            if (number != 0 && number <= kinds.size()) {
                kinds[number - 1U] = field.kind;
            }
        }
    }
    std::vector<TIdentityText> found;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (kinds[i]) {
            found.push_back({structure.texts[i], *kinds[i]});
        }
    }
    return found;
}

std::string_view UuidOf(std::string_view table, const TPlacedStructure& structure) {
    const bool hasUuid = structure.type == 1 && structure.fields.length >= uuidOffset + uuidSize;
    return hasUuid ? table.substr(structure.fields.start + uuidOffset, uuidSize) : std::string_view();
}

// Converts between the byte order of the text and that of the table; the conversion is its own inverse.
std::string SwapUuid(std::string bytes, TSmbiosVersion version) {
    if (version >= TSmbiosVersion{2, 6}) {
        for (const TRange field : {TRange{0, 4}, TRange{4, 2}, TRange{6, 2}}) {
            const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(field.start);
            std::reverse(start, start + static_cast<std::ptrdiff_t>(field.length));
        }
    }
    return bytes;
}

void RedactUuid(TSmbiosVersion version, const TPlacedStructure& structure, const TIdentityTexts& identities,
                std::string& table) {
    const std::string_view stored = UuidOf(table, structure);
    if (const auto uuid = FormatSmbiosUuid(stored, version)) {
        const std::string bytes =
            identities.GetPseudonyms().ReplaceBytes(SwapUuid(std::string(stored), version));
        table.replace(structure.fields.start + uuidOffset, uuidSize, SwapUuid(bytes, version));
    }
}

// NULs are kept: they terminate texts and so determine where the next structure starts.
void Overwrite(TRange range, std::string& table) {
    const auto start = table.begin() + static_cast<std::ptrdiff_t>(range.start);
    std::replace_if(
        start, start + static_cast<std::ptrdiff_t>(range.length), [](char c) { return c != '\0'; }, 'x');
}

void RedactBattery(const TPlacedStructure& structure, const TIdentityTexts& identities, std::string& table) {
    if (structure.type != batteryType) {
        return;
    }
    const std::size_t serialEnd = batterySerialOffset + batterySerialSize;
    if (structure.fields.length >= serialEnd) {
        const std::size_t start = structure.fields.start + batterySerialOffset;
        table.replace(start, batterySerialSize,
                      identities.GetPseudonyms().ReplaceBytes(table.substr(start, batterySerialSize)));
    }
    if (structure.fields.length > batteryOemOffset) {
        Overwrite({structure.fields.start + batteryOemOffset, structure.fields.length - batteryOemOffset},
                  table);
    }
}

bool IsCharacter(char c) {
    constexpr std::uint8_t del = 0x7F;  // also the type of the end-of-table structure
    const auto byte = static_cast<std::uint8_t>(c);
    return byte >= ' ' && byte != del;
}

void RedactStructure(const TPlacedStructure& structure, const TIdentityTexts& identities,
                     std::string& table) {
    for (const auto& [text, kind] : FindIdentityTexts(table, structure)) {
        const std::string replaced = identities.ReplaceValue(table.substr(text.start, text.length));
        table.replace(text.start, text.length, replaced);
    }
    RedactBattery(structure, identities, table);
    if (IsOpaque(structure.type)) {
        Overwrite({structure.fields.start + headerSize, structure.fields.length - headerSize}, table);
        return;
    }
    for (const TRange& text : structure.texts) {
        const std::string replaced =
            identities.Replace(table.substr(text.start, text.length), ETextContext::anything);
        table.replace(text.start, text.length, replaced);
    }
}

}  // namespace

void LearnSmbios(std::string_view table, TSmbiosVersion version, TIdentityTexts& identities) {
    for (const TPlacedStructure& structure : PlaceAll(table)) {
        if (IsOpaque(structure.type)) {
            continue;
        }
        for (const auto& [text, kind] : FindIdentityTexts(table, structure)) {
            identities.Learn(table.substr(text.start, text.length), kind);
        }
        if (const auto uuid = FormatSmbiosUuid(UuidOf(table, structure), version)) {
            identities.Learn(*uuid, EIdentityKind::uuid);
        }
        for (const TRange& text : structure.texts) {
            identities.LearnForms(table.substr(text.start, text.length), ETextContext::anything);
        }
    }
}

std::string RedactSmbios(std::string_view table, TSmbiosVersion version, const TIdentityTexts& identities) {
    std::string redacted(table);
    std::size_t end = 0;  // end of the previous structure
    for (const TPlacedStructure& structure : PlaceAll(table)) {
        // Texts after an empty text belong to no field and may be serial numbers.
        Overwrite({end, structure.fields.start - end}, redacted);
        RedactUuid(version, structure, identities, redacted);
        RedactStructure(structure, identities, redacted);
        end = structure.end;
    }
    const std::size_t tableEnd = FindSmbiosTableEnd(table);
    Overwrite({end, tableEnd - end}, redacted);
    // The header of the end-of-table structure or of a malformed one is kept; the rest may be texts.
    const bool isHeader = tableEnd < redacted.size() && !IsCharacter(redacted[tableEnd]);
    const std::size_t rest = std::min(tableEnd + (isHeader ? headerSize : 0), redacted.size());
    Overwrite({rest, redacted.size() - rest}, redacted);
    return redacted;
}

}  // namespace NVORHOST
