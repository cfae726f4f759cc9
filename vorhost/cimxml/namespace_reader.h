// Converts the elements of a CIM-XML document to classes and instances.
#pragma once

#include "documents/document_error.h"
#include "documents/xml_parser.h"
#include "vorhost/cimxml/elements.h"
#include "vorhost/cimxml/property_builder.h"
#include "vorhost/cimxml/reference_builder.h"
#include "vorhost/model/cim_name.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace NVORHOST {

/// Errors: the events throw TDocumentCause; `GetPlace` then returns class and property of the error.
class TNamespaceReader final : public IXmlEvents {
  public:
    /// `target` must be empty and outlive this object.
    explicit TNamespaceReader(TMemoryNamespace& target);

    void StartElement(std::string_view name, const TXmlAttributes& attributes) override;
    void EndElement() override;
    void Text(std::string_view piece) override;

    /// The class and property that are being read; file and line are absent.
    const TDocumentPlace& GetPlace() const { return place_; }

  private:
    using TNameSet = std::unordered_set<std::string, TCimNameHash, TCimNameEqual>;
    using TStart = void (TNamespaceReader::*)(const TXmlAttributes& attributes);
    using TEnd = void (TNamespaceReader::*)();
    struct TElementRow;
    struct TQualifiedSource {
        TValueSource source;
        bool hasStatus = false;  // without it the qualifiers are those of another program
    };

    static const TElementRow elementRows[];
    static const TElementRow& RowOf(EElement element);

    void Pass(const TXmlAttributes& /*attributes*/) {}
    void Pass() {}

    void StartError(const TXmlAttributes& attributes);
    void StartClass(const TXmlAttributes& attributes);
    void EndClass();
    void StartInstance(const TXmlAttributes& attributes);
    void EndInstance();
    void StartProperty(const TXmlAttributes& attributes);
    void StartArrayProperty(const TXmlAttributes& attributes);
    void StartReferenceProperty(const TXmlAttributes& attributes);
    void EndProperty();
    void StartQualifier(const TXmlAttributes& attributes);
    void EndQualifierValue();
    void EndQualifierElement();
    void EndScalarValue();
    void StartArray(const TXmlAttributes& attributes);
    void EndElementValue();
    void EndElementNull();
    void StartReference(const TXmlAttributes& attributes);
    void EndReference();
    void EndFullPath();
    void EndLocalPath();
    void EndHost();
    void StartNamespaceStep(const TXmlAttributes& attributes);
    void StartClassName(const TXmlAttributes& attributes);
    void StartInstanceName(const TXmlAttributes& attributes);
    void StartKeyBinding(const TXmlAttributes& attributes);
    void EndKeyBinding();
    void StartKeyValue(const TXmlAttributes& attributes);
    void EndKeyValue();

    void BeginProperty(const TXmlAttributes& attributes, TCIMValue::TCIMType type, bool isArray);
    void BeginTypedProperty(const TXmlAttributes& attributes, bool isArray);
    void AddDeclaration(TCIMValue value);
    void SetProperty(TCIMValue value);
    void EndInstanceProperty(TCIMValue value);
    void SetStatus();
    void SetEncoding();
    TQualifiedSource& GetQualified();
    void AddToKnownClass(TMemoryClass& known);

    TMemoryNamespace& target_;
    std::vector<EElement> open_{EElement::document};
    TDocumentPlace place_;
    std::string text_;  // text of the innermost element

    TNameSet declaredClasses_;
    std::vector<TPropertyDeclaration> declarations_;
    TNameSet declaredNames_;
    boost::shared_ptr<TMemoryClass> class_;  // class of the most recent instance
    boost::shared_ptr<TMemoryInstance> instance_;
    std::size_t propertyCount_ = 0;
    TPropertyBuilder property_;
    std::string qualifierName_;        // of the innermost qualifier
    TQualifiedSource classSource_;     // of the current class
    TQualifiedSource propertySource_;  // of the current property
    TReferenceBuilder reference_;
};

}  // namespace NVORHOST
