// The script of pages with lists and searches. Without it, the pages have everything but the tools.
#pragma once

#include <string_view>

namespace NFLEET {

std::string_view GetSiteScript();

/// Returns the SHA-256 digest of the script in Base64, by which the policy of a page allows it.
std::string_view GetSiteScriptDigest();

}  // namespace NFLEET
