// The looks of the page. The policy of the page names the digest of this sheet, so that no other style
// applies.
#pragma once

#include <string_view>

namespace NINVENTORY {

/// Returns the style sheet; it contains none of "<&".
std::string_view GetStyleSheet();

/// Returns the SHA-256 of the style sheet in Base64, for style-src. A test computes it again.
std::string_view GetStyleDigest();

}  // namespace NINVENTORY
