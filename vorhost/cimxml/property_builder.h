// Puts together one property, or the declaration of one, from its values as they come.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Errors: throws TCimXmlCause for values that are malformed, too many, or out of their type's range.
class TPropertyBuilder {
  public:
    /// A property without value; what was built before is forgotten.
    void Begin(std::string_view name, TCIMValue::TCIMType type, bool isArray);
    /// Says that values come in an encoding; all but base64 is refused.
    void SetEncoding(std::string_view encoding);
    void SetScalar(const std::string& text);
    /// A reference; only one that is no object path can be in an encoding.
    void SetReference(const std::string& text, bool isOpaque);
    void BeginArray();
    void AddElement(const std::string& text);
    void AddNull();

    const std::string& GetName() const { return name_; }
    TCIMValue::TCIMType GetType() const { return type_; }
    bool IsArray() const { return isArray_; }
    /// The value, null when none came. To be called once.
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
