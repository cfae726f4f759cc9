#include "redaction/inventory/namespace_redaction.h"

#include "inventory/model/resource_type.h"
#include "inventory/saved/result_names.h"
#include "redaction/inventory/property_identity.h"
#include "vorhost/cimxml/base64.h"

#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;
using TConvert = std::function<std::string(const TPropertyTexts& place, std::size_t index, std::string text)>;

constexpr unsigned char decimal = 10;

bool IsText(const TCIMValue& value) {
    const TCIMType type = value.GetType();
    return !value.IsNull() && (type == TCIMType::eString || type == TCIMType::eReference);
}

TCIMValue MakeText(TCIMType type, const std::string& text) {
    return type == TCIMType::eReference ? TCIMValue::Reference(text) : TCIMValue(text);
}

// Returns a value whose texts were converted.
TCIMValue Convert(const TCIMValue& value, const TPropertyTexts& place, const TConvert& convert) {
    if (!IsText(value)) {
        return value;
    }
    if (!value.IsArray()) {
        return MakeText(value.GetType(), convert(place, 0, value.ToString(decimal)));
    }
    const TCIMValue::TElements& elements = value;
    TCIMValue::TElements converted;
    converted.reserve(elements.size());
    for (const TCIMValue& element : elements) {
        converted.push_back(
            element.IsNull()
                ? element
                : MakeText(element.GetType(), convert(place, converted.size(), element.ToString(decimal))));
    }
    return TCIMValue::Array(value.GetType(), std::move(converted));
}

std::optional<std::vector<std::string>> FindDescriptions(const TMemoryInstance& instance) {
    const TCIMValue* const value = instance.Find("IdentifyingDescriptions");
    if (value == nullptr || value->IsNull() || !value->IsArray()) {
        return std::nullopt;
    }
    std::vector<std::string> descriptions;
    const TCIMValue::TElements& elements = *value;
    for (const TCIMValue& element : elements) {
        descriptions.push_back(element.ToString(decimal));
    }
    return descriptions;
}

bool IsDocument(const std::string& className, const std::string& property) {
    return className == resultClassName && property == inventoryProperty;
}

// A text that is not Base64 is not a document, and is treated as every other text.
std::string ConvertDocument(const TPropertyTexts& place, const std::string& text, const TConvert& convert,
                            const TVisitDocument& visit) {
    const auto bytes = DecodeBase64(text);
    return bytes && !bytes->empty() ? EncodeBase64(visit(*bytes)) : convert(place, 0, text);
}

// Copies a class and its instances, with texts converted.
void CopyClass(TMemoryClass& source, TMemoryNamespace& target, const TConvert& convert,
               const TVisitDocument& visit) {
    const std::string& name = source.GetName();
    const std::string type = NINVENTORY::GetTypeOfClass(name);
    std::vector<TPropertyDeclaration> declarations = source.GetDeclarations();
    for (TPropertyDeclaration& each : declarations) {
        if (each.defaultValue) {
            each.defaultValue =
                Convert(*each.defaultValue, {type, GetDocumentName(name, each.name)}, convert);
        }
    }
    const auto copy = target.AddClass(name, std::move(declarations));
    for (const auto& instance : source.GetInstances()) {
        const auto added = copy->NewInstance();
        const auto descriptions = FindDescriptions(*instance);
        for (const TPropertyView& property : instance->GetProperties()) {
            const TPropertyTexts place{type, GetDocumentName(name, property.name),
                                       descriptions ? &*descriptions : nullptr};
            const bool isDocument =
                IsDocument(name, property.name) && IsText(property.value) && !property.value.IsArray();
            added->Set(property.name, isDocument
                                          ? TCIMValue(ConvertDocument(place, property.value.ToString(decimal),
                                                                      convert, visit))
                                          : Convert(property.value, place, convert));
        }
        added->CommitInstance({});
    }
}

TMemoryNamespace Copy(const TMemoryNamespace& source, const TConvert& convert, const TVisitDocument& visit) {
    TMemoryNamespace copy;
    for (const auto& each : source.GetClasses()) {
        CopyClass(*each, copy, convert, visit);
    }
    return copy;
}

}  // namespace

void LearnNamespace(const TMemoryNamespace& source, TIdentityTexts& identities, const TVisitDocument& visit) {
    (void)Copy(
        source,
        [&](const TPropertyTexts& place, std::size_t index, std::string text) {
            LearnText(place, index, text, identities);
            return text;
        },
        visit);
}

TMemoryNamespace RedactNamespace(const TMemoryNamespace& source, const TIdentityTexts& identities,
                                 const TVisitDocument& visit) {
    return Copy(
        source,
        [&](const TPropertyTexts& place, std::size_t index, const std::string& text) {
            return ReplaceText(place, index, text, identities);
        },
        visit);
}

std::optional<EIdentityKind> FindInNamespace(const TMemoryNamespace& source, const TIdentitySearch& search,
                                             const TVisitDocument& visit) {
    std::optional<EIdentityKind> found;
    (void)Copy(
        source,
        [&](const TPropertyTexts& place, std::size_t index, std::string text) {
            found = found ? found : FindInText(place, index, text, search);
            return text;
        },
        visit);
    return found;
}

}  // namespace NVORHOST
