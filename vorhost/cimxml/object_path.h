// Object paths: the text that reference values hold, and its parts, which VALUE.REFERENCE elements spell out.
//
// The text is the untyped object path of DSP0004:
//     //host/root/cimv2:Class.Key="value",Number=5     an instance, with host and namespace
//     root/cimv2:Class                                 a class, with namespace
//     Class=@                                          an instance without keys
//     Class="value"                                    an instance with one key that is not named
//     Class.Key=(reference)"Other.Id=\"1\""            a key that is a reference itself
// Text keys stand in double quotes with a backslash before each double quote and backslash; booleans are TRUE
// or FALSE; numbers stand as they were written. The mark (reference) keeps references and texts apart.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// One key of an instance's path.
struct TPathKey {
    enum class EType { text, boolean, number, reference };

    std::string name;  ///< empty: the only key, not named
    EType type = EType::text;
    std::string value;  ///< without quotes and escapes; of a reference its object path
};

struct TObjectPath {
    std::string host;                     ///< empty: none
    std::vector<std::string> namespaces;  ///< "root", "cimv2"; empty: none, and then no host
    std::string className;
    bool isInstance = false;
    std::vector<TPathKey> keys;  ///< empty for a class
};

/// References may stand within keys of references this deep; the quoting doubles with each level.
constexpr std::size_t maxReferenceNesting = 4;

/// The text of a path. All parts must be such as the checks below accept.
std::string ToText(const TObjectPath& path);

/// The path that a text spells. Absent: nullopt unless `ToText` gives back this very text, and for references
/// nested too deep.
std::optional<TObjectPath> ParseObjectPath(std::string_view text);

/// True for a name of a class or property: letters, digits, underscores and non-ASCII characters, at most
/// 1024 bytes, no digit first. Source: DSP0004, 5.1.
bool IsCimName(std::string_view name);
/// True for what may stand as a host: not empty, no white space, no "/".
bool IsHostName(std::string_view host);
/// True for one step of a namespace: not empty, at most 1024 bytes, no white space, none of "/" ":" and '"'.
bool IsNamespaceStep(std::string_view step);
/// True for a number as a key: an integer or a real as VALUE elements write them.
bool IsNumberText(std::string_view text);

}  // namespace NVORHOST
