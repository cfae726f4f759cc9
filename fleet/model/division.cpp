#include "fleet/model/division.h"

#include "fleet/model/canonical_text.h"
#include "fleet/model/property_part.h"

#include <cstdint>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::TProperty;

void AddTo(TCanonicalText& text, const std::vector<std::string>& values) {
    text.Add(values.size());
    for (const std::string& value : values) {
        text.Add(value);
    }
}

TProperty WithoutValues(const TProperty& property) {
    return {property.name, property.type, property.shape, {}};
}

}  // namespace

TDivision DivideResource(const NINVENTORY::TResource& resource) {
    const TTypeParts& parts = GetTypeParts(resource.type);
    TDivision division;
    division.version.type = resource.type;
    division.version.list = resource.list;
    for (std::uint32_t position = 0; position < resource.properties.size(); ++position) {
        const TProperty& property = resource.properties[position];
        switch (parts.Get(property.name)) {
            case EPropertyPart::stable:
                division.version.properties.push_back({property, false});
                break;
            case EPropertyPart::identifying:
                division.version.properties.push_back({WithoutValues(property), true});
                division.identity.push_back(property.values);
                break;
            case EPropertyPart::isVolatile:
                division.volatileProperties.push_back({position, property});
                break;
        }
    }
    division.version.digest = MakeVersionDigest(division.version);
    return division;
}

TDigest MakeVersionDigest(const TVersion& version) {
    TCanonicalText text;
    text.Add(version.type);
    text.Add(version.list);
    text.Add(version.id ? 1U : 0U);
    text.Add(version.id.value_or(""));
    for (const TVersionProperty& stored : version.properties) {
        text.Add(stored.property.name);
        text.Add(stored.property.type);
        text.Add(static_cast<std::uint64_t>(stored.property.shape));
        text.Add(stored.isIdentifying ? 1U : 0U);
        AddTo(text, stored.property.values);
    }
    return text.GetDigest();
}

TDigest MakeContentDigest(std::span<const TPresence> resources) {
    TCanonicalText text;
    for (const TPresence& resource : resources) {
        text.Add(resource.resource);
        text.Add(resource.version);
        text.Add(resource.identity.size());
        for (const auto& values : resource.identity) {
            AddTo(text, values);
        }
    }
    return text.GetDigest();
}

}  // namespace NFLEET
