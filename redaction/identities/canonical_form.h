// The canonical form of an identity: what remains the same however it is written.
#pragma once

#include "text/ascii.h"

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

}  // namespace NVORHOST
