#include "vorhost/cimxml/reference_builder.h"

#include "documents/document_error.h"
#include "documents/xml_text.h"
#include "vorhost/cimxml/value_text.h"

#include <algorithm>
#include <utility>

namespace NVORHOST {
namespace {

using EType = TPathKey::EType;
using TCIMType = TCIMValue::TCIMType;

struct TKeyTypeRow {
    std::string_view valueType;
    EType type;
};

constexpr TKeyTypeRow keyTypeRows[] = {
    {"string", EType::text},
    {"numeric", EType::number},
    {"boolean", EType::boolean},
};

EType FindKeyType(std::string_view valueType) {
    const auto* const row = std::ranges::find(keyTypeRows, valueType, &TKeyTypeRow::valueType);
    if (row == std::end(keyTypeRows)) {
        throw TDocumentCause("unknown VALUETYPE " + Quote(valueType));
    }
    return row->type;
}

EType KeyTypeOf(TCIMType type) {
    if (type == TCIMType::eBoolean) {
        return EType::boolean;
    }
    const bool isNumber = type >= TCIMType::eUint8 && type <= TCIMType::eReal64;
    return isNumber ? EType::number : EType::text;
}

void RequireCimName(std::string_view name) {
    if (!IsCimName(name)) {
        throw TDocumentCause(Quote(name) + " is not a valid CIM name");
    }
}

std::string BooleanKeyText(const std::string& text) {
    return ParseValueText(TCIMType::eBoolean, text).GetBoolean() ? "TRUE" : "FALSE";
}

std::string NumberKeyText(const std::string& text) {
    const std::string_view number = TrimXmlSpace(text);
    if (!IsNumberText(number)) {
        throw TDocumentCause("the key " + Quote(number) + " is not a valid number");
    }
    return std::string(number);
}

std::string KeyText(EType type, const std::string& text) {
    switch (type) {
        case EType::boolean:
            return BooleanKeyText(text);
        case EType::number:
            return NumberKeyText(text);
        default:
            return text;
    }
}

}  // namespace

void TReferenceBuilder::Open() {
    if (open_.size() == maxReferenceNesting) {
        throw TDocumentCause("references are nested more than " + std::to_string(maxReferenceNesting) +
                             " levels deep");
    }
    open_.emplace_back();
}

void TReferenceBuilder::SetHost(std::string_view host) {
    const std::string_view trimmed = TrimXmlSpace(host);
    if (!IsHostName(trimmed)) {
        throw TDocumentCause(Quote(host) + " is not a valid host");
    }
    Innermost().path.host = trimmed;
}

void TReferenceBuilder::AddNamespace(std::string_view steps) {
    for (std::size_t begin = 0; begin <= steps.size();) {
        const std::size_t end = std::min(steps.find('/', begin), steps.size());
        const std::string_view step = steps.substr(begin, end - begin);
        if (!IsNamespaceStep(step)) {
            throw TDocumentCause(Quote(steps) + " is not a valid namespace");
        }
        Innermost().path.namespaces.emplace_back(step);
        begin = end + 1;
    }
}

void TReferenceBuilder::BeginObject(bool isInstance) {
    if (Innermost().hasObject) {
        throw TDocumentCause("reference to more than one object");
    }
    Innermost().hasObject = true;
    Innermost().path.isInstance = isInstance;
}

void TReferenceBuilder::SetClass(std::string_view className) {
    BeginObject(/*isInstance=*/false);
    RequireCimName(className);
    Innermost().path.className = className;
}

void TReferenceBuilder::SetInstance(std::string_view className) {
    BeginObject(/*isInstance=*/true);
    if (!className.empty()) {
        RequireCimName(className);
    }
    Innermost().path.className = className;
}

void TReferenceBuilder::BeginKey(std::string_view name) {
    RequireCimName(name);
    Innermost().key.name = name;
    Innermost().awaitsValue = true;
}

void TReferenceBuilder::EndKey() {
    if (Innermost().awaitsValue) {
        throw TDocumentCause("the key " + Quote(*Innermost().key.name) + " has no value");
    }
    Innermost().key.name.reset();
}

void TReferenceBuilder::SetKeyType(std::optional<std::string_view> valueType,
                                   std::optional<std::string_view> type) {
    EType& keyType = Innermost().key.type;
    keyType = EType::text;
    if (valueType) {
        keyType = FindKeyType(*valueType);
    } else if (type) {
        const auto cimType = FindCimType(*type);
        if (!cimType) {
            throw TDocumentCause("unknown TYPE " + Quote(*type));
        }
        keyType = KeyTypeOf(*cimType);
    }
}

void TReferenceBuilder::AddKeyValue(const std::string& text) {
    const EType type = Innermost().key.type;
    AddKey(type, KeyText(type, text));
}

void TReferenceBuilder::AddKey(EType type, std::string value) {
    TOpenPath& open = Innermost();
    auto& keys = open.path.keys;
    const bool isNamed = open.key.name.has_value();
    const bool followsUnnamed = !keys.empty() && !keys.front().name;
    if (isNamed ? !open.awaitsValue || followsUnnamed : !keys.empty()) {
        throw TDocumentCause("duplicate value for a key");
    }
    keys.push_back({open.key.name, type, std::move(value)});
    open.awaitsValue = false;
}

void TReferenceBuilder::RequireNamespace() {
    if (Innermost().path.namespaces.empty()) {
        throw TDocumentCause("object path without a namespace");
    }
}

void TReferenceBuilder::RequireHost() {
    if (!Innermost().path.host) {
        throw TDocumentCause("object path without a host");
    }
}

std::string TReferenceBuilder::TakeOpaque(TObjectPath& path) {
    const bool isText = path.namespaces.empty() && path.keys.size() == 1 && !path.keys.front().name &&
                        path.keys.front().type == EType::text;
    if (!isText) {
        throw TDocumentCause("object path without a class");
    }
    return std::move(path.keys.front().value);
}

std::optional<std::string> TReferenceBuilder::Close() {
    if (!Innermost().hasObject) {
        throw TDocumentCause("reference without an object");
    }
    TObjectPath path = std::move(Innermost().path);
    open_.pop_back();
    isOpaque_ = path.className.empty();
    if (open_.empty()) {
        return isOpaque_ ? TakeOpaque(path) : ToText(path);
    }
    if (isOpaque_) {
        throw TDocumentCause("object path without a class");
    }
    AddKey(EType::reference, ToText(path));
    return std::nullopt;
}

void TReferenceBuilder::Clear() {
    open_.clear();
}

}  // namespace NVORHOST
