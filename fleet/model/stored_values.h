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

/// Returns the resources of volatile values, once for consecutive values of one resource.
std::vector<TDigest> ListResources(const std::vector<TVolatileValue>& values);

/// Describes the volatile properties of an inventory and their resources, without values: inventories with
/// equal texts have the same layout.
std::string FormatLayout(const std::vector<TVolatileValue>& values);

/// Describes volatile properties with the number of the resource in ListResources, without values: machines
/// that are made alike have the same form.
std::string FormatForm(const std::vector<TVolatileValue>& values);

/// The row of a form: what FormatForm returns, each property with the values that it usually has.
std::string FormatUsualForm(const std::vector<TVolatileValue>& values);

/// The row of a layout.
struct TStoredLayout {
    std::string form;       ///< what FormatUsualForm returned for any inventory with this form
    std::string resources;  ///< the bytes of the digests that ListResources returns
    std::string usual;      ///< the values that this machine usually has, as FormatVolatile writes values
};

/// Makes the row of a layout; the values count as the usual ones.
TStoredLayout MakeStoredLayout(std::string form, const std::vector<TVolatileValue>& values);

/// Returns the values of properties that differ from the usual ones, and 0 for each of the others. `layout`
/// is that of the values.
std::string FormatVolatile(const std::vector<TVolatileValue>& values, const TStoredLayout& layout);

/// Parses the output of FormatVolatile with its layout; nullopt if they do not belong together.
std::optional<std::vector<TVolatileValue>> ParseVolatile(const TStoredLayout& layout,
                                                         std::string_view values);

}  // namespace NFLEET
