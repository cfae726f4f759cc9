#include "fleet/model/property_part.h"

#include "inventory/model/meaning.h"

#include <algorithm>
#include <functional>
#include <map>

namespace NFLEET {
namespace {

struct TNameRow {
    std::string_view type;  // empty for every type
    std::string_view property;
};

// Names that contain the serial number or address of the part, or of the part that a link leads to.
constexpr TNameRow identifyingNames[] = {
    {"", "Antecedent"},
    {"", "Dependent"},
    {"DiskDrive", "DeviceID"},
    {"DiskPartition", "DeviceID"},
    {"EthernetPort", "DeviceID"},
    {"IBPort", "DeviceID"},
    {"IPProtocolEndpoint", "ElementName"},
    {"LocalFileSystem", "Name"},
    {"LogicalVolume", "DeviceID"},
    {"TapeDrive", "DeviceID"},
    {"WiFiPort", "DeviceID"},
};

constexpr std::string_view omittedTypes[] = {"CADAT", "Process"};

using TPartsOfTypes = std::map<std::string, TTypeParts, std::less<>>;

template <typename TAction>
void ForEachRow(TAction action) {
    for (const NINVENTORY::TMeaning& meaning : NINVENTORY::GetMeanings()) {
        if (meaning.isVolatile || meaning.identifies) {
            action(meaning.type, meaning.property,
                   meaning.isVolatile ? EPropertyPart::isVolatile : EPropertyPart::identifying);
        }
    }
    for (const TNameRow& row : identifyingNames) {
        action(row.type, row.property, EPropertyPart::identifying);
    }
}

// A type with a row in the table of meanings has rows of its own only, and those of every type that it does
// not replace.
TPartsOfTypes MakeParts() {
    TPartsOfTypes parts;
    TTypeParts& general = parts[""];
    ForEachRow([&](std::string_view type, std::string_view property, EPropertyPart part) {
        if (type.empty()) {
            general.Set(property, part);
        }
    });
    for (const NINVENTORY::TMeaning& meaning : NINVENTORY::GetMeanings()) {
        parts.try_emplace(std::string(meaning.type), general);
    }
    for (const NINVENTORY::TMeaning& meaning : NINVENTORY::GetMeanings()) {
        if (!meaning.type.empty()) {
            parts.find(meaning.type)->second.Set(meaning.property, EPropertyPart::stable);
        }
    }
    ForEachRow([&](std::string_view type, std::string_view property, EPropertyPart part) {
        if (!type.empty()) {
            parts.try_emplace(std::string(type), general).first->second.Set(property, part);
        }
    });
    return parts;
}

}  // namespace

void TTypeParts::Set(std::string_view property, EPropertyPart part) {
    const auto row = std::ranges::find(rows_, property, &std::pair<std::string, EPropertyPart>::first);
    if (row != rows_.end()) {
        row->second = part;
    } else if (part != EPropertyPart::stable) {
        rows_.emplace_back(property, part);
        lengths_ |= std::uint64_t{1} << (property.size() % lengthBits);
    }
}

EPropertyPart TTypeParts::Find(std::string_view property) const {
    const auto row = std::ranges::find(rows_, property, &std::pair<std::string, EPropertyPart>::first);
    return row == rows_.end() ? EPropertyPart::stable : row->second;
}

const TTypeParts& GetTypeParts(std::string_view type) {
    static const TPartsOfTypes parts = MakeParts();
    const auto found = parts.find(type);
    return found == parts.end() ? parts.find("")->second : found->second;
}

bool IsStoredType(std::string_view type) {
    return std::ranges::find(omittedTypes, type) == std::end(omittedTypes);
}

}  // namespace NFLEET
