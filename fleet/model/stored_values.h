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

/// Describes volatile properties without their values.
std::string FormatLayout(const std::vector<TVolatileValue>& values);

/// The row of a layout: volatile properties, each with the value that it usually has.
std::string FormatUsualValues(const std::vector<TVolatileValue>& values);

/// Returns the values of properties that differ from the usual ones, and 0 for each of the others. `usual` is
/// a row of the same layout.
std::string FormatVolatile(const std::vector<TVolatileValue>& values, std::string_view usual);

/// Parses the output of FormatVolatile with the row of its layout; nullopt if they do not belong together.
std::optional<std::vector<TVolatileValue>> ParseVolatile(std::string_view usual, std::string_view values);

}  // namespace NFLEET
