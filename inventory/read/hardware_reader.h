// The reader of hardware documents. Programs call ReadDocument (document_reader.h), which loads the module of
// this reader on demand.
#pragma once

#include "documents/xml_parser.h"
#include "inventory/read/document_events.h"
#include "inventory/read/document_input.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace NINVENTORY {

/// The largest resource in bytes: more than any device has, and little enough to hold in memory.
inline constexpr std::size_t maxResourceBytes = std::size_t{8} << 20;

/// Reads a hardware document to its end. See ReadDocument.
void ReadHardwareDocument(TDocumentInput& input, IDocumentEvents& events);

/// Turns the elements of one document into resources.
/// Errors: throws TDocumentCause for elements and attributes that the format does not have, and for a
///         resource that is too large.
class THardwareReader final : public NVORHOST::IXmlEvents {
  public:
    /// `events` must outlive this object.
    explicit THardwareReader(IDocumentEvents& events) : events_(events) {}

    /// The parser that calls this object; gives the lines of resources.
    void SetParser(const NVORHOST::TXmlParser& parser) { parser_ = &parser; }

    void StartElement(std::string_view name, const NVORHOST::TXmlAttributes& attributes) override;
    void EndElement() override;
    void Text(std::string_view piece) override;

  private:
    enum class EPlace { document, collection, list, resource, property, scalar, array, element };

    struct TStep;

    int GetLine() const { return parser_ == nullptr ? 0 : parser_->GetLine(); }
    void Count(std::size_t bytes);
    /// The last property of the resource.
    TProperty& GetProperty() { return resource_.properties[propertyCount_ - 1]; }

    void BeginCollection(const NVORHOST::TXmlAttributes& attributes);
    void BeginContext(const NVORHOST::TXmlAttributes& attributes);
    void BeginList(const NVORHOST::TXmlAttributes& attributes);
    void BeginResource(const NVORHOST::TXmlAttributes& attributes);
    void EndResource();
    void BeginProperty(const NVORHOST::TXmlAttributes& attributes);
    void BeginScalar(const NVORHOST::TXmlAttributes& attributes);
    void BeginArray(const NVORHOST::TXmlAttributes& attributes);
    void BeginElement(const NVORHOST::TXmlAttributes& attributes);

    static const TStep steps[];

    IDocumentEvents& events_;
    const NVORHOST::TXmlParser* parser_ = nullptr;
    EPlace place_ = EPlace::document;
    std::string listType_;
    TResource resource_;
    std::size_t resourceBytes_ = 0;
    std::size_t propertyCount_ = 0;  // of the resource; the rest is memory of the resource before
};

}  // namespace NINVENTORY
