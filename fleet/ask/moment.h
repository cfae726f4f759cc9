// Points in time as people and programs write them.
#pragma once

#include "fleet/model/rows.h"

#include <optional>
#include <string>
#include <string_view>

namespace NFLEET {

/// Parses "2026-03-01" (midnight UTC), "2026-03-01T04:00:00+01:00" or with "Z" (RFC 3339), or a time before
/// `now`: a number and s, m, h, d or w, as "7d". Returns nullopt for any other text.
std::optional<TSeconds> ParseMoment(std::string_view text, TSeconds now);

/// Returns "2026-03-01T03:00:00Z".
std::string FormatMoment(TSeconds moment);

}  // namespace NFLEET
