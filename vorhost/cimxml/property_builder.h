// Builds a property, or the declaration of one, from its values in document order.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Errors: throws TDocumentCause for a value that is malformed or out of range, and for a second value.
class TPropertyBuilder {
  public:
    /// Begins a property without a value; discards the previous one.
    void Begin(std::string_view name, TCIMValue::TCIMType type, bool isArray);
    /// Sets the encoding of the values that follow. Only base64 is accepted.
    void SetEncoding(std::string_view encoding);
    void SetScalar(const std::string& text);
    /// Sets a reference. Only an opaque one, which is not an object path, can be encoded.
    void SetReference(const std::string& text, bool isOpaque);
    void BeginArray();
    void AddElement(const std::string& text);
    void AddNull();

    const std::string& GetName() const { return name_; }
    TCIMValue::TCIMType GetType() const { return type_; }
    bool IsArray() const { return isArray_; }
    /// Returns the value; null if none was set. Call once.
    TCIMValue TakeValue();

  private:
    TCIMValue ParseValue(const std::string& text) const;
    void RequireNoValue() const;

    std::string name_;
    TCIMValue::TCIMType type_ = TCIMValue::TCIMType::eString;
    bool isArray_ = false;
    bool isBase64_ = false;
    std::optional<TCIMValue> scalar_;
    std::optional<TCIMValue::TElements> elements_;
};

}  // namespace NVORHOST
