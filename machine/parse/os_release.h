// /etc/os-release: the name and version of the distribution.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Members are absent when their line is missing or its value is empty.
struct TOsRelease {
    std::optional<std::string> name;        ///< NAME
    std::optional<std::string> prettyName;  ///< PRETTY_NAME
    std::optional<std::string> version;     ///< VERSION
    std::optional<std::string> versionId;   ///< VERSION_ID
};

/// Shape:  shell assignments, one a line; values bare, in single or in double quotes, with the escapes the
///         shell knows in each. A bare value may contain blanks; after a quoted part a blank ends the value.
///         The last assignment of a name counts, as in a shell.
/// Errors: lines that are no assignment, and values whose quotes do not close, are skipped.
/// Source: os-release(5).
TOsRelease ParseOsRelease(std::string_view text);

}  // namespace NVORHOST
