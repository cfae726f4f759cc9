#include "vorhost/cimxml/namespace_reader.h"

#include "documents/xml_text.h"
#include "host/vor_exception.h"
#include "vorhost/cimxml/format.h"
#include "vorhost/cimxml/mapping_string.h"
#include "vorhost/cimxml/value_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;

// A larger text buffer is freed after use.
constexpr std::size_t keptTextBytes = std::size_t{1024} * 1024;

std::string_view RequireAttribute(const TXmlAttributes& attributes, std::string_view name) {
    const auto value = attributes.Find(name);
    if (!value) {
        throw TDocumentCause("missing attribute " + std::string(name));
    }
    return *value;
}

// Returns the name of a class or property. Refuses names that the writer would refuse.
std::string_view RequireName(const TXmlAttributes& attributes, std::string_view attribute) {
    const std::string_view name = RequireAttribute(attributes, attribute);
    if (name.empty() || name.size() > maxNameBytes) {
        throw TDocumentCause("the attribute " + std::string(attribute) +
                             " is empty or too long: " + Quote(name));
    }
    return name;
}

TCIMType RequireType(const TXmlAttributes& attributes) {
    const std::string_view name = RequireAttribute(attributes, "TYPE");
    const auto type = FindCimType(name);
    if (!type) {
        throw TDocumentCause("unknown TYPE " + Quote(name));
    }
    return *type;
}

std::string DescribeType(TCIMType type, bool isArray) {
    return type.ToString() + (isArray ? " array" : "");
}

[[noreturn]] void ThrowConflict(TCIMType type, bool isArray, const TPropertyDeclaration& declaration) {
    throw TDocumentCause("is " + DescribeType(type, isArray) + ", but the class declares " +
                         DescribeType(declaration.type, declaration.isArray));
}

bool Fits(const TCIMValue& value, const TPropertyDeclaration& declaration) {
    return value.GetType() == declaration.type && value.IsArray() == declaration.isArray;
}

}  // namespace

struct TNamespaceReader::TElementRow {
    EElement element;
    TStart start;
    TEnd end;
    bool hasText = false;  // contains text instead of elements
};

// Rows in the order of EElement, so that an element is the index of its row.
constexpr TNamespaceReader::TElementRow TNamespaceReader::elementRows[] = {
    {EElement::document, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::ignored, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::cim, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::declaration, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::declarationGroup, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::message, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::response, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::methodResponse, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::responseError, &TNamespaceReader::StartError, &TNamespaceReader::Pass},
    {EElement::returnValue, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::object, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::classDeclaration, &TNamespaceReader::StartClass, &TNamespaceReader::EndClass},
    {EElement::instance, &TNamespaceReader::StartInstance, &TNamespaceReader::EndInstance},
    {EElement::property, &TNamespaceReader::StartProperty, &TNamespaceReader::EndProperty},
    {EElement::arrayProperty, &TNamespaceReader::StartArrayProperty, &TNamespaceReader::EndProperty},
    {EElement::referenceProperty, &TNamespaceReader::StartReferenceProperty, &TNamespaceReader::EndProperty},
    {EElement::qualifier, &TNamespaceReader::StartQualifier, &TNamespaceReader::Pass},
    {EElement::qualifierValue, &TNamespaceReader::Pass, &TNamespaceReader::EndQualifierValue, true},
    {EElement::qualifierArray, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::qualifierElement, &TNamespaceReader::Pass, &TNamespaceReader::EndQualifierElement, true},
    {EElement::scalarValue, &TNamespaceReader::Pass, &TNamespaceReader::EndScalarValue, true},
    {EElement::array, &TNamespaceReader::StartArray, &TNamespaceReader::Pass},
    {EElement::elementValue, &TNamespaceReader::Pass, &TNamespaceReader::EndElementValue, true},
    {EElement::elementNull, &TNamespaceReader::Pass, &TNamespaceReader::EndElementNull},
    {EElement::reference, &TNamespaceReader::StartReference, &TNamespaceReader::EndReference},
    {EElement::classPath, &TNamespaceReader::Pass, &TNamespaceReader::EndFullPath},
    {EElement::localClassPath, &TNamespaceReader::Pass, &TNamespaceReader::EndLocalPath},
    {EElement::instancePath, &TNamespaceReader::Pass, &TNamespaceReader::EndFullPath},
    {EElement::localInstancePath, &TNamespaceReader::Pass, &TNamespaceReader::EndLocalPath},
    {EElement::namespacePath, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::host, &TNamespaceReader::Pass, &TNamespaceReader::EndHost, true},
    {EElement::localNamespacePath, &TNamespaceReader::Pass, &TNamespaceReader::Pass},
    {EElement::namespaceStep, &TNamespaceReader::StartNamespaceStep, &TNamespaceReader::Pass},
    {EElement::className, &TNamespaceReader::StartClassName, &TNamespaceReader::Pass},
    {EElement::instanceName, &TNamespaceReader::StartInstanceName, &TNamespaceReader::Pass},
    {EElement::keyBinding, &TNamespaceReader::StartKeyBinding, &TNamespaceReader::EndKeyBinding},
    {EElement::keyValue, &TNamespaceReader::StartKeyValue, &TNamespaceReader::EndKeyValue, true},
};

const TNamespaceReader::TElementRow& TNamespaceReader::RowOf(EElement element) {
    static_assert(std::size(elementRows) == elementCount);
    static_assert([] {
        for (std::size_t i = 0; i < elementCount; ++i) {
            if (elementRows[i].element != static_cast<EElement>(i)) {
                return false;
            }
        }
        return true;
    }());
    return elementRows[static_cast<std::size_t>(element)];
}

TNamespaceReader::TNamespaceReader(TMemoryNamespace& target) : target_(target) {}

void TNamespaceReader::StartElement(std::string_view name, const TXmlAttributes& attributes) {
    const auto element = FindElement(open_.back(), name);
    if (!element) {
        throw TDocumentCause("unexpected element " + Quote(name));
    }
    open_.push_back(*element);
    text_.clear();
    (this->*RowOf(*element).start)(attributes);
}

void TNamespaceReader::EndElement() {
    (this->*RowOf(open_.back()).end)();
    open_.pop_back();
    if (text_.capacity() > keptTextBytes) {
        text_ = {};
    }
}

void TNamespaceReader::Text(std::string_view piece) {
    if (RowOf(open_.back()).hasText) {
        text_ += piece;
    } else if (open_.back() != EElement::ignored && !IsXmlSpace(piece)) {
        throw TDocumentCause("unexpected text " + Quote(TrimXmlSpace(piece)));
    }
}

void TNamespaceReader::StartError(const TXmlAttributes& attributes) {
    const auto description = attributes.Find("DESCRIPTION");
    throw TDocumentCause("the server answered with error " +
                         std::string(RequireAttribute(attributes, "CODE")) +
                         (description ? ": " + std::string(*description) : std::string()));
}

void TNamespaceReader::StartClass(const TXmlAttributes& attributes) {
    place_.className = RequireName(attributes, "NAME");
    if (!declaredClasses_.insert(*place_.className).second) {
        throw TDocumentCause("duplicate class declaration");
    }
    declarations_.clear();
    declaredNames_.clear();
    propertyCount_ = 0;
    classSource_ = {};
}

void TNamespaceReader::EndClass() {
    if (const auto known = target_.FindClass(*place_.className)) {
        AddToKnownClass(*known);
    } else {
        target_.AddClass(*place_.className, std::exchange(declarations_, {}));
    }
    if (classSource_.hasStatus) {
        target_.FindClass(*place_.className)->SetSource(std::move(classSource_.source));
    }
    place_.className.reset();
}

// An instance that preceded the declaration has already added the class.
void TNamespaceReader::AddToKnownClass(TMemoryClass& known) {
    for (TPropertyDeclaration& declaration : declarations_) {
        place_.propertyName = declaration.name;
        for (const auto& instance : known.GetInstances()) {
            const TCIMValue* const value = instance->Find(declaration.name);
            if (value != nullptr && !Fits(*value, declaration)) {
                ThrowConflict(value->GetType(), value->IsArray(), declaration);
            }
        }
        known.Declare(std::move(declaration));
    }
    place_.propertyName.reset();
}

void TNamespaceReader::StartInstance(const TXmlAttributes& attributes) {
    place_.className = RequireName(attributes, "CLASSNAME");
    if (class_ == nullptr || !EqualCimNames(class_->GetName(), *place_.className)) {
        class_ = target_.FindClass(*place_.className);
    }
    if (class_ == nullptr) {
        class_ = target_.AddClass(*place_.className);
    }
    instance_ = class_->NewInstance();
    propertyCount_ = 0;
}

void TNamespaceReader::EndInstance() {
    instance_->CommitInstance({});
    instance_.reset();
    place_.className.reset();
}

void TNamespaceReader::StartProperty(const TXmlAttributes& attributes) {
    BeginTypedProperty(attributes, /*isArray=*/false);
}

void TNamespaceReader::StartArrayProperty(const TXmlAttributes& attributes) {
    BeginTypedProperty(attributes, /*isArray=*/true);
}

void TNamespaceReader::StartReferenceProperty(const TXmlAttributes& attributes) {
    BeginProperty(attributes, TCIMType::eReference, /*isArray=*/false);
}

void TNamespaceReader::BeginTypedProperty(const TXmlAttributes& attributes, bool isArray) {
    place_.propertyName = RequireName(attributes, "NAME");
    BeginProperty(attributes, RequireType(attributes), isArray);
}

void TNamespaceReader::BeginProperty(const TXmlAttributes& attributes, TCIMType type, bool isArray) {
    place_.propertyName = RequireName(attributes, "NAME");
    if (++propertyCount_ > maxProperties) {
        throw TDocumentCause("more than " + std::to_string(maxProperties) + " properties");
    }
    property_.Begin(*place_.propertyName, type, isArray);
    propertySource_ = {};
}

void TNamespaceReader::EndProperty() {
    if (instance_ != nullptr) {
        EndInstanceProperty(property_.TakeValue());
    } else {
        AddDeclaration(property_.TakeValue());
    }
    place_.propertyName.reset();
}

void TNamespaceReader::EndInstanceProperty(TCIMValue value) {
    if (!propertySource_.hasStatus) {
        return SetProperty(std::move(value));
    }
    if (!value.IsNull()) {
        SetProperty(std::move(value));
    }
    if (instance_->FindSource(property_.GetName()) != nullptr) {
        throw TDocumentCause("duplicate property");
    }
    instance_->SetSource(property_.GetName(), std::move(propertySource_.source));
}

void TNamespaceReader::AddDeclaration(TCIMValue value) {
    if (!declaredNames_.insert(property_.GetName()).second) {
        throw TDocumentCause("duplicate property declaration");
    }
    TPropertyDeclaration declaration{property_.GetName(), property_.GetType(), property_.IsArray(), {}};
    if (!value.IsNull()) {
        declaration.defaultValue = std::move(value);
    }
    declarations_.push_back(std::move(declaration));
}

void TNamespaceReader::SetProperty(TCIMValue value) {
    if (instance_->Find(property_.GetName()) != nullptr) {
        throw TDocumentCause("duplicate property");
    }
    try {
        instance_->Set(property_.GetName(), std::move(value));
    } catch (const NKELVOR20::TVORException&) {  // thrown only for a conflict with the declaration
        const auto& declarations = class_->GetDeclarations();
        const auto declaration = std::ranges::find_if(
            declarations, [this](const auto& each) { return EqualCimNames(each.name, property_.GetName()); });
        if (declaration == declarations.end()) {
            throw;
        }
        ThrowConflict(property_.GetType(), property_.IsArray(), *declaration);
    }
}

void TNamespaceReader::StartQualifier(const TXmlAttributes& attributes) {
    qualifierName_ = RequireAttribute(attributes, "NAME");
}

void TNamespaceReader::EndQualifierValue() {
    if (EqualCimNames(qualifierName_, encodingQualifierName)) {
        SetEncoding();
    } else if (EqualCimNames(qualifierName_, statusQualifierName)) {
        SetStatus();
    } else if (EqualCimNames(qualifierName_, passedOverQualifierName)) {
        GetQualified().source.passedOver = text_;
    }
}

void TNamespaceReader::SetStatus() {
    const auto status = FindValueStatus(text_);
    if (!status) {
        throw TDocumentCause("unknown status " + Quote(text_));
    }
    GetQualified().source.status = *status;
    GetQualified().hasStatus = true;
}

// Classes have no values.
void TNamespaceReader::SetEncoding() {
    if (place_.propertyName) {
        property_.SetEncoding(text_);
    }
}

TNamespaceReader::TQualifiedSource& TNamespaceReader::GetQualified() {
    return place_.propertyName ? propertySource_ : classSource_;
}

void TNamespaceReader::EndQualifierElement() {
    if (EqualCimNames(qualifierName_, sourcesQualifierName)) {
        GetQualified().source.sources.push_back(ParseMappingString(text_));
    } else if (EqualCimNames(qualifierName_, gapsQualifierName)) {
        GetQualified().source.gaps.push_back(text_);
    }
}

void TNamespaceReader::EndScalarValue() {
    property_.SetScalar(text_);
}

void TNamespaceReader::StartArray(const TXmlAttributes& /*attributes*/) {
    property_.BeginArray();
}

void TNamespaceReader::EndElementValue() {
    property_.AddElement(text_);
}

void TNamespaceReader::EndElementNull() {
    property_.AddNull();
}

void TNamespaceReader::StartReference(const TXmlAttributes& /*attributes*/) {
    reference_.Open();
}

void TNamespaceReader::EndReference() {
    if (const auto text = reference_.Close()) {
        property_.SetReference(*text, reference_.IsOpaque());
    }
}

void TNamespaceReader::EndFullPath() {
    reference_.RequireHost();
    reference_.RequireNamespace();
}

void TNamespaceReader::EndLocalPath() {
    reference_.RequireNamespace();
}

void TNamespaceReader::EndHost() {
    reference_.SetHost(text_);
}

void TNamespaceReader::StartNamespaceStep(const TXmlAttributes& attributes) {
    reference_.AddNamespace(RequireAttribute(attributes, "NAME"));
}

void TNamespaceReader::StartClassName(const TXmlAttributes& attributes) {
    reference_.SetClass(RequireAttribute(attributes, "NAME"));
}

void TNamespaceReader::StartInstanceName(const TXmlAttributes& attributes) {
    reference_.SetInstance(RequireAttribute(attributes, "CLASSNAME"));
}

void TNamespaceReader::StartKeyBinding(const TXmlAttributes& attributes) {
    reference_.BeginKey(RequireAttribute(attributes, "NAME"));
}

void TNamespaceReader::EndKeyBinding() {
    reference_.EndKey();
}

void TNamespaceReader::StartKeyValue(const TXmlAttributes& attributes) {
    reference_.SetKeyType(attributes.Find("VALUETYPE"), attributes.Find("TYPE"));
}

void TNamespaceReader::EndKeyValue() {
    reference_.AddKeyValue(text_);
}

}  // namespace NVORHOST
