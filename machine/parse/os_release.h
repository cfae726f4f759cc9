// Parses /etc/os-release: the name and version of the distribution.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// A member is absent if no line assigns its variable or if the value is empty.
struct TOsRelease {
    std::optional<std::string> name;        ///< NAME
    std::optional<std::string> prettyName;  ///< PRETTY_NAME
    std::optional<std::string> version;     ///< VERSION
    std::optional<std::string> versionId;   ///< VERSION_ID
};

/// Reads values as FindOsReleaseValue does.
/// Source: os-release(5).
TOsRelease ParseOsRelease(std::string_view text);

}  // namespace NVORHOST
