// Times of documents as seconds.
#pragma once

#include "fleet/model/rows.h"

#include <optional>
#include <string_view>

namespace NFLEET {

/// Parses "2024-03-01T12:00:00+01:00", with "Z" for UTC or without an offset, which counts as UTC; nullopt
/// for any other text, and for times that a calendar does not have or that precede 1970-01-02.
std::optional<TSeconds> ParseTimestamp(std::string_view text);

}  // namespace NFLEET
