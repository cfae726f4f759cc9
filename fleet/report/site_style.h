// The looks of the pages of a site, besides those of every page.
#pragma once

#include <string_view>

namespace NFLEET {

std::string_view GetSiteStyle();

/// Returns the SHA-256 digest of the sheet in Base64, by which the policy of a page allows it.
std::string_view GetSiteStyleDigest();

}  // namespace NFLEET
