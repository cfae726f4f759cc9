#include "vorhost/cimxml/property_builder.h"

#include "documents/document_error.h"
#include "documents/xml_text.h"
#include "vorhost/cimxml/base64.h"
#include "vorhost/cimxml/format.h"
#include "vorhost/cimxml/value_text.h"

#include <utility>

namespace NVORHOST {
namespace {

std::string Decode(std::string_view text) {
    auto bytes = DecodeBase64(TrimXmlSpace(text));
    if (!bytes) {
        throw TDocumentCause(Quote(text) + " is not base64");
    }
    return std::move(*bytes);
}

}  // namespace

void TPropertyBuilder::Begin(std::string_view name, TCIMValue::TCIMType type, bool isArray) {
    name_ = name;
    type_ = type;
    isArray_ = isArray;
    isBase64_ = false;
    scalar_.reset();
    elements_.reset();
}

void TPropertyBuilder::SetEncoding(std::string_view encoding) {
    if (TrimXmlSpace(encoding) != base64EncodingName) {
        throw TDocumentCause("unknown encoding " + Quote(encoding));
    }
    RequireNoValue();
    isBase64_ = true;
}

void TPropertyBuilder::SetScalar(const std::string& text) {
    RequireNoValue();
    scalar_ = ParseValue(text);
}

void TPropertyBuilder::SetReference(const std::string& text, bool isOpaque) {
    RequireNoValue();
    scalar_ = TCIMValue::Reference(isOpaque && isBase64_ ? Decode(text) : text);
}

void TPropertyBuilder::BeginArray() {
    RequireNoValue();
    elements_.emplace();
}

void TPropertyBuilder::AddElement(const std::string& text) {
    elements_->push_back(ParseValue(text));
}

void TPropertyBuilder::AddNull() {
    elements_->emplace_back(type_);
}

TCIMValue TPropertyBuilder::TakeValue() {
    if (scalar_) {
        return std::move(*scalar_);
    }
    if (elements_) {
        return TCIMValue::Array(type_, std::move(*elements_));
    }
    return isArray_ ? TCIMValue::NullArray(type_) : TCIMValue(type_);
}

TCIMValue TPropertyBuilder::ParseValue(const std::string& text) const {
    return isBase64_ ? ParseValueBytes(type_, Decode(text)) : ParseValueText(type_, text);
}

void TPropertyBuilder::RequireNoValue() const {
    if (scalar_ || elements_) {
        throw TDocumentCause("more than one value");
    }
}

}  // namespace NVORHOST
