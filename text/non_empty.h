// Turns an empty text, which is how files show a missing value, into an absent one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns a copy of `text`; nullopt if it is empty.
inline std::optional<std::string> NonEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

}  // namespace NVORHOST
