// Resources as the document that they were read from.
#pragma once

#include "inventory/read/document_events.h"

#include <ostream>
#include <string>
#include <string_view>

namespace NINVENTORY {

/// Writes one document, byte for byte as the writer of inventories does. The stream carries the errors.
class TDocumentWriter final : public IDocumentEvents {
  public:
    /// `out` must outlive this object.
    explicit TDocumentWriter(std::ostream& out) : out_(out) {}

    void BeginDocument(const TDocumentHead& head) override;
    void BeginList(std::string_view listType, int line) override;
    void AddResource(TResource&& resource) override;
    /// Ends the document. Call once, after the last resource.
    void Finish();

  private:
    void EndList();
    void WriteProperty(const TProperty& property);
    void WriteAttribute(std::string_view start, std::string_view value);
    void WriteLine(std::string_view start, std::string_view value, std::string_view end);

    std::ostream& out_;
    EDocument kind_ = EDocument::hardware;
    std::string_view listEnd_;  // closes the open list; empty if none is open
};

}  // namespace NINVENTORY
