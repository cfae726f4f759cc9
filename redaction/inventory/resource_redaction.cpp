#include "redaction/inventory/resource_redaction.h"

#include "inventory/model/resource_id.h"
#include "inventory/model/resource_type.h"
#include "text/hex.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using NINVENTORY::TProperty;
using NINVENTORY::TResource;
using NINVENTORY::TResourceType;

constexpr std::string_view systemInformationType = "NOXSystemInfo";

// Numbers, dates and truth values are not identities.
bool IsText(const TProperty& property) {
    return property.type == "string";
}

// Calls `visit` with the place, index and text of each value; passes over the identifier that some resources
// have as a property as well.
template <typename TResourceOf, typename TVisit>
void VisitTexts(TResourceOf& resource, const TVisit& visit) {
    const TProperty* const descriptions = resource.Find("IdentifyingDescriptions");
    TPropertyTexts place{resource.type, {}, descriptions == nullptr ? nullptr : &descriptions->values};
    for (auto& property : resource.properties) {
        place.property = property.name;
        for (std::size_t i = 0; i < property.values.size() && IsText(property); ++i) {
            if (resource.id.empty() || property.values[i] != resource.id) {
                visit(place, i, property.values[i]);
            }
        }
    }
}

// The meaning of a free text is the same in every property.
bool IsFreeText(const TPropertyTexts& place) {
    return GetIdentity(place.type, place.property) == EIdentity::none;
}

bool IsRemembered(const std::string& text) {
    constexpr std::size_t maxLength = 256;
    return text.size() <= maxLength;
}

template <typename TRemembered>
void Limit(TRemembered& remembered) {
    constexpr std::size_t maxTexts = 20'000;
    if (remembered.size() > maxTexts) {
        remembered.clear();
    }
}

std::string MakeSystemName(const TResource& resource) {
    std::string name(resource.GetText("Manufacturer"));
    name.append(",").append(resource.GetText("MachineType")).append("-").append(resource.GetText("Model"));
    return name.append("-").append(resource.GetText("SerialNumber"));
}

// Returns the keys that the identifier of a resource may have been made from. One without a value is the type
// alone, or an empty value, depending on the declaration of the class.
std::vector<std::string> ListKeys(const TResource& resource) {
    if (resource.type == systemInformationType) {
        return {NINVENTORY::MakeSystemKey(resource.GetText("MachineType"), resource.GetText("SerialNumber"))};
    }
    std::vector<std::string> keys{NINVENTORY::MakeBareKey(resource.type)};
    if (const TResourceType* const type = NINVENTORY::FindResourceType(resource.type)) {
        keys.push_back(NINVENTORY::MakeKey(resource.type, NINVENTORY::GetKeyName(type->className),
                                           resource.GetText(type->keyProperty)));
    }
    return keys;
}

}  // namespace

void TResourceLearning::Learn(const TResource& resource) {
    VisitTexts(resource, [&](const TPropertyTexts& place, std::size_t index, const std::string& text) {
        const bool isKnown = IsFreeText(place) && IsRemembered(text) && !learned_.insert(text).second;
        if (!isKnown) {
            LearnText(place, index, text, identities_);
        }
        Limit(learned_);
    });
}

std::string TResourceRedaction::ReplaceFreeText(const TPropertyTexts& place, std::string text) {
    if (!IsRemembered(text)) {
        return ReplaceText(place, 0, text, identities_);
    }
    Limit(replaced_);
    const auto [known, isNew] = replaced_.try_emplace(std::move(text));
    if (isNew) {
        known->second = ReplaceText(place, 0, known->first, identities_);
    }
    return known->second;
}

void TResourceRedaction::Replace(TResource& resource) {
    const TResource original = resource;
    VisitTexts(resource, [&](const TPropertyTexts& place, std::size_t index, std::string& text) {
        text = IsFreeText(place) ? ReplaceFreeText(place, std::move(text))
                                 : ReplaceText(place, index, text, identities_);
    });
    resource.id = ReplaceId(original, resource);
    if (!original.id.empty()) {
        for (TProperty& property : resource.properties) {
            std::ranges::replace(property.values, original.id, resource.id);
        }
    }
    if (!original.name.empty()) {
        resource.name = original.name == MakeSystemName(original)
                            ? MakeSystemName(resource)
                            : identities_.Replace(original.name, ETextContext::identities);
    }
}

std::string TResourceRedaction::ReplaceId(const TResource& original, const TResource& replaced) const {
    if (original.id.empty()) {
        return {};
    }
    const std::vector<std::string> keys = ListKeys(original);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (NINVENTORY::DigestOf(keys[i]) == original.id) {
            return NINVENTORY::DigestOf(ListKeys(replaced)[i]);
        }
    }
    constexpr std::size_t length = 32;
    const TDigest digest = digest_->Compute("identifier/" + original.id);
    return ToHex(std::string(digest.begin(), digest.end()), EHexCase::upper).substr(0, length);
}

std::optional<EIdentityKind> FindInResource(const TResource& resource, const TIdentitySearch& search) {
    std::optional<EIdentityKind> found = search.Find(resource.name, ETextContext::anything);
    VisitTexts(resource, [&](const TPropertyTexts& place, std::size_t index, const std::string& text) {
        found = found ? found : FindBesidesBytes(place, index, text, search);
    });
    return found;
}

}  // namespace NVORHOST
