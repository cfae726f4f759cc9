// Object paths: the text of reference values, and its parts, which VALUE.REFERENCE elements contain.
//
// The text is the untyped object path of DSP0004:
//     //host/root/cimv2:Class.Key="value",Number=5     an instance, with host and namespace
//     root/cimv2:Class                                 a class, with namespace
//     Class=@                                          an instance without keys
//     Class="value"                                    an instance with a single unnamed key
//     Class.Key=(reference)"Other.Id=\"1\""            a key that is a reference itself
// Text keys are enclosed in double quotes, with a backslash before each double quote and backslash. Booleans
// are TRUE or FALSE. Numbers keep their spelling. The prefix (reference) distinguishes references from texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// One key of an instance.
struct TPathKey {
    enum class EType { text, boolean, number, reference };

    std::optional<std::string> name;  ///< absent for a single unnamed key
    EType type = EType::text;
    std::string value;  ///< without quotes and escapes; an object path for a reference
};

struct TObjectPath {
    std::optional<std::string> host;
    std::vector<std::string> namespaces;  ///< "root", "cimv2"; required with a host
    std::string className;
    bool isInstance = false;
    std::vector<TPathKey> keys;  ///< empty for a class
};

/// Maximum nesting of references in keys. The number of backslashes doubles with each level.
constexpr std::size_t maxReferenceNesting = 4;

/// Returns the text of a path, whose parts must be valid according to the checks below.
std::string ToText(const TObjectPath& path);

/// Parses the text of a path.
/// Absent: nullopt unless `ToText` of the path is the same text, and for references that are nested too
///         deeply.
std::optional<TObjectPath> ParseObjectPath(std::string_view text);

/// True for a valid name of a class or property: letters, digits, underscores and non-ASCII characters, not
/// starting with a digit, at most 1024 bytes.
/// Source: DSP0004, 5.1.
bool IsCimName(std::string_view name);
/// True for a valid host: not empty, no white space, no "/".
bool IsHostName(std::string_view host);
/// True for a valid step of a namespace: not empty, at most 1024 bytes, no white space, none of "/" ":" and
/// '"'.
bool IsNamespaceStep(std::string_view step);
/// True for a valid numeric key: an integer or real in the form of a VALUE element.
bool IsNumberText(std::string_view text);

}  // namespace NVORHOST
