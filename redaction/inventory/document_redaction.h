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
    explicit TLearnedDocument(TIdentityTexts& identities) : identities_(identities) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(NINVENTORY::TResource&& resource) override { LearnResource(resource, identities_); }

  private:
    TIdentityTexts& identities_;
};

/// Writes a document with pseudonyms. The stream carries the errors.
class TRedactedDocument final : public NINVENTORY::IDocumentEvents {
  public:
    /// Both must outlive this object.
    TRedactedDocument(const TResourceRedaction& redaction, std::ostream& out)
        : redaction_(redaction), writer_(out) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& head) override { writer_.BeginDocument(head); }
    void BeginList(std::string_view listType, int line) override { writer_.BeginList(listType, line); }
    void AddResource(NINVENTORY::TResource&& resource) override {
        redaction_.Replace(resource);
        writer_.AddResource(std::move(resource));
    }
    /// Ends the document. Call once, after the last resource.
    void Finish() { writer_.Finish(); }

  private:
    const TResourceRedaction& redaction_;
    NINVENTORY::TDocumentWriter writer_;
};

/// Searches the values of a document for identities.
class TSearchedDocument final : public NINVENTORY::IDocumentEvents {
  public:
    /// `search` must outlive this object.
    explicit TSearchedDocument(const TIdentitySearch& search) : search_(search) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& /*head*/) override {}
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}
    void AddResource(NINVENTORY::TResource&& resource) override {
        found_ = found_ ? found_ : FindInResource(resource, search_);
    }
    /// Returns the kind of the first identity that was found; nullopt if there is none.
    const std::optional<EIdentityKind>& GetFound() const { return found_; }

  private:
    const TIdentitySearch& search_;
    std::optional<EIdentityKind> found_;
};

}  // namespace NVORHOST
