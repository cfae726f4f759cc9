// The canonical form of an identity: what remains the same however it is written.
#pragma once

#include "text/ascii.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace NVORHOST {

/// True for the characters that make up identities; all others are separators. Bytes of characters outside
/// ASCII are part of a name.
constexpr bool IsIdentityCharacter(char c) {
    return IsAlphanumeric(c) || static_cast<unsigned char>(c) >= 0x80;
}

/// Returns the identity characters of `text`, in lower case.
inline std::string ToCanonical(std::string_view text) {
    std::string canonical;
    for (const char c : text) {
        if (IsIdentityCharacter(c)) {
            canonical += ToLower(c);
        }
    }
    return canonical;
}

/// The case of the letters of a text, for characters that replace its own.
class TCaseOf {
  public:
    explicit TCaseOf(std::string_view text)
        : isUpper_(std::ranges::any_of(text, IsUpper) && std::ranges::none_of(text, IsLower)) {}

    /// Returns `replacement` in the case of `original`; a digit has the case of the whole text.
    char Apply(char original, char replacement) const {
        return IsUpper(original) || (isUpper_ && IsDigit(original)) ? ToUpper(replacement) : replacement;
    }

  private:
    bool isUpper_;
};

}  // namespace NVORHOST
