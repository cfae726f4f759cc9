// Builds object paths from the parts of VALUE.REFERENCE elements, in document order.
#pragma once

#include "vorhost/cimxml/object_path.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Errors: throws TDocumentCause for parts that do not form a valid path.
class TReferenceBuilder {
  public:
    /// Begins a reference. If another one is open, the new one becomes a key of it.
    void Open();
    void SetHost(std::string_view host);
    /// Adds one step of the namespace, or several separated by "/", which some servers write.
    void AddNamespace(std::string_view steps);
    void SetClass(std::string_view className);
    /// An empty `className` begins an opaque text, which is not an object path: exactly one unnamed text key
    /// must follow.
    void SetInstance(std::string_view className);
    /// Begins a named key.
    void BeginKey(std::string_view name);
    void EndKey();
    /// Sets the type of the next key value from the attributes VALUETYPE or, if that is absent, TYPE.
    void SetKeyType(std::optional<std::string_view> valueType, std::optional<std::string_view> type);
    void AddKeyValue(const std::string& text);
    /// Throws if the path has no namespace, which full and local paths require.
    void RequireNamespace();
    /// Throws if the path has no host, which full paths require.
    void RequireHost();

    /// Ends the innermost reference. Returns the text of an outermost one; nullopt for one that became a key.
    std::optional<std::string> Close();
    /// True if the most recently closed reference is an opaque text.
    bool IsOpaque() const { return isOpaque_; }
    /// Discards all open references.
    void Clear();

  private:
    struct TOpenPath {
        TObjectPath path;
        bool hasObject = false;
        TPathKey key;  ///< the next key
        bool awaitsValue = false;
    };

    TOpenPath& Innermost() { return open_.back(); }
    void AddKey(TPathKey::EType type, std::string value);
    void BeginObject(bool isInstance);
    static std::string TakeOpaque(TObjectPath& path);

    std::vector<TOpenPath> open_;
    bool isOpaque_ = false;
};

}  // namespace NVORHOST
