#include "fleet/model/property_part.h"

#include "inventory/model/meaning.h"

#include <algorithm>
#include <functional>
#include <map>

namespace NFLEET {
namespace {

constexpr std::string_view omittedTypes[] = {"CADAT", "Process"};

using TPartsOfTypes = std::map<std::string, TTypeParts, std::less<>>;

EPropertyPart GetPart(const NINVENTORY::TMeaning& meaning) {
    if (meaning.isVolatile) {
        return EPropertyPart::isVolatile;
    }
    return meaning.identity == NINVENTORY::EIdentity::none ? EPropertyPart::stable
                                                           : EPropertyPart::identifying;
}

// A row of a type replaces that of every type.
TPartsOfTypes MakeParts() {
    TPartsOfTypes parts;
    TTypeParts& general = parts[""];
    for (const NINVENTORY::TMeaning& meaning : NINVENTORY::GetMeanings()) {
        if (meaning.type.empty()) {
            general.Set(meaning.property, GetPart(meaning));
        }
    }
    for (const NINVENTORY::TMeaning& meaning : NINVENTORY::GetMeanings()) {
        if (!meaning.type.empty()) {
            TTypeParts& own = parts.try_emplace(std::string(meaning.type), general).first->second;
            own.Set(meaning.property, GetPart(meaning));
        }
    }
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
