// Identities in documents: hardware inventories and system information.
#pragma once

#include "inventory/read/document_events.h"
#include "inventory/write/document_writer.h"
#include "redaction/inventory/resource_redaction.h"

#include <optional>
#include <ostream>
#include <string_view>
#include <utility>

namespace NVORHOST {

/// Learns the identities of a document.
class TLearnedDocument final : public NINVENTORY::IDocumentEvents {
  public:
    /// `identities` must outlive this object.
    explicit TLearnedDocument(TIdentityTexts& identities) : learning_(identities) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(NINVENTORY::TResource&& resource) override { learning_.Learn(resource); }

  private:
    TResourceLearning learning_;
};

/// Writes a document with pseudonyms, and searches its values for identities that are left. The stream
/// carries the errors.
class TRedactedDocument final : public NINVENTORY::IDocumentEvents {
  public:
    /// All of them must outlive this object.
    TRedactedDocument(TResourceRedaction& redaction, const TIdentitySearch& search, std::ostream& out)
        : redaction_(redaction), search_(search), writer_(out) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& head) override { writer_.BeginDocument(head); }
    void BeginList(std::string_view listType, int line) override { writer_.BeginList(listType, line); }
    void AddResource(NINVENTORY::TResource&& resource) override {
        redaction_.Replace(resource);
        found_ = found_ ? found_ : FindInResource(resource, search_);
        writer_.AddResource(std::move(resource));
    }
    /// Ends the document. Call once, after the last resource.
    void Finish() { writer_.Finish(); }
    /// Returns the kind of the first identity that is left; nullopt if there is none.
    const std::optional<EIdentityKind>& GetFound() const { return found_; }

  private:
    TResourceRedaction& redaction_;
    const TIdentitySearch& search_;
    NINVENTORY::TDocumentWriter writer_;
    std::optional<EIdentityKind> found_;
};

}  // namespace NVORHOST
