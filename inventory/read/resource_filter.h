// Passes a part of the resources of a document on.
#pragma once

#include "inventory/read/document_events.h"

#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace NINVENTORY {

/// A condition on a property: one of its values is equal to a text, or contains a match of an expression.
struct TCondition {
    std::string property;
    std::string value;
    std::optional<std::regex> expression;  ///< instead of `value`
};

/// The resources and properties to pass on; an empty list passes everything.
struct TFilterSettings {
    std::vector<std::string> types{};
    std::vector<std::string> properties{};
    std::vector<TCondition> conditions{};  ///< all must hold
    bool keepsSources = false;             ///< pass on where the values come from
};

/// Parses "PROPERTY=VALUE" or "PROPERTY~EXPRESSION" (ECMAScript's regular expressions).
/// Errors: throws std::invalid_argument with a message.
TCondition ParseCondition(const std::string& text);

/// True if a value meets a condition.
bool Meets(const std::string& value, const TCondition& condition);

class TResourceFilter final : public IDocumentEvents {
  public:
    /// Both must outlive this object.
    TResourceFilter(const TFilterSettings& settings, IDocumentEvents& events)
        : settings_(settings), events_(events) {}

    void BeginDocument(const TDocumentHead& head) override { events_.BeginDocument(head); }
    void BeginList(std::string_view listType, int line) override { events_.BeginList(listType, line); }
    void AddResource(TResource&& resource) override;
    void NoteUnknownType(std::string_view type, const NVORHOST::TValueSource& source) override;

  private:
    bool IsWanted(const TResource& resource) const;

    const TFilterSettings& settings_;
    IDocumentEvents& events_;
};

}  // namespace NINVENTORY
