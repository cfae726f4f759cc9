// Lists of values as JSON text, which SQL can take apart.
#pragma once

#include "fleet/model/rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// Returns an array with an element for each list of values: a string for one value, else an array of
/// strings. Bytes that are not UTF-8 stay as they are.
std::string FormatValues(const std::vector<std::vector<std::string>>& lists);

/// Parses the output of FormatValues; nullopt for any other text.
std::optional<std::vector<std::vector<std::string>>> ParseValues(std::string_view text);

/// A value as SQL has it: an integer if `type` is an integer type of XML Schema and the number has no other
/// text.
std::optional<std::int64_t> FindInteger(std::string_view type, std::string_view value);

/// Describes volatile properties without their values, and the values.
std::string FormatLayout(const std::vector<TVolatileValue>& values);
std::string FormatVolatile(const std::vector<TVolatileValue>& values);

/// Joins layout and values; nullopt if they do not belong together.
std::optional<std::vector<TVolatileValue>> ParseVolatile(std::string_view layout, std::string_view values);

}  // namespace NFLEET
