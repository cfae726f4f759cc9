// Checks the content of a document against the catalogue that it was written from.
#pragma once

#include "inventory/read/document_events.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// Something wrong in a document.
struct TProblem {
    int line = 0;            ///< 1-based; 0 if it belongs to no line
    std::string resourceId;  ///< empty if it belongs to no resource
    std::string text;        ///< for people, without the place
};

/// Checks one document while it is read: its lists, the types, names, order and values of properties, and
/// identifiers.
/// Memory: 12 bytes for each resource, to find identifiers that occur twice.
class TValidator final : public IDocumentEvents {
  public:
    using TReport = std::function<void(const TProblem&)>;

    explicit TValidator(TReport report) : report_(std::move(report)) {}

    void BeginDocument(const TDocumentHead& head) override;
    void BeginList(std::string_view listType, int line) override;
    void AddResource(TResource&& resource) override;
    /// Reports what only a whole document shows. Call once, at the end of a document that could be read.
    void Finish();

  private:
    struct TSeen {
        std::uint32_t high, low;  // the first 64 bits of the identifier
        int line;
    };

    void Report(const TResource& resource, std::string text) const;
    void Report(int line, std::string text) const { report_({line, {}, std::move(text)}); }
    void CheckSystemInformation(const TResource& resource) const;
    void CheckPlace(const TResource& resource) const;
    void CheckProperties(const TResource& resource) const;
    void CheckValues(const TResource& resource, const TProperty& property) const;
    void CheckIdentifier(const TResource& resource) const;
    void Remember(const TResource& resource);
    void ReportRepeatedIdentifiers();

    TReport report_;
    EDocument kind_ = EDocument::hardware;
    std::vector<std::string> lists_;
    std::vector<TSeen> seen_;
};

}  // namespace NINVENTORY
