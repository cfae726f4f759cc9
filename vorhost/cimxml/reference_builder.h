// Puts together the object paths that VALUE.REFERENCE elements spell out, from their parts as they come.
#pragma once

#include "vorhost/cimxml/object_path.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Errors: throws TCimXmlCause for parts that make up no path.
class TReferenceBuilder {
  public:
    /// Begins a reference; within one that is open, one that is a key of it.
    void Open();
    void SetHost(std::string_view host);
    /// One step of the namespace, or several with "/" between them, as some servers write it.
    void AddNamespace(std::string_view steps);
    void SetClass(std::string_view className);
    /// An empty `className` begins a text that is no object path: it must get one unnamed text key, and
    /// nothing else.
    void SetInstance(std::string_view className);
    /// The name of the key whose value comes next.
    void BeginKey(std::string_view name);
    void EndKey();
    /// The type of the text that comes next: `valueType` as VALUETYPE has it, or else the CIM type `type`.
    void SetKeyType(std::optional<std::string_view> valueType, std::optional<std::string_view> type);
    void AddKeyValue(const std::string& text);
    /// Checks that the path has the parts that a full or local one must have.
    void RequireNamespace();
    void RequireHost();

    /// Ends the innermost reference. The text of the outermost; nullopt for one that has become a key.
    std::optional<std::string> Close();
    /// True when the reference that was closed last was no object path but another text.
    bool IsOpaque() const { return isOpaque_; }
    /// Forgets what is open.
    void Clear();

  private:
    struct TOpenPath {
        TObjectPath path;
        bool hasObject = false;
        TPathKey key;  ///< the one that comes next
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
