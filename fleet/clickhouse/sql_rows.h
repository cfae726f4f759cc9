// The answer of a query that a user wrote, as values.
#pragma once

#include "fleet/store/fleet_store.h"

#include <string_view>

namespace NFLEET {

/// The format that PassSqlRows reads: a line of names, a line of types, and a line for each row; values are
/// separated by tabs and escaped.
inline constexpr std::string_view sqlRowsFormat = "TabSeparatedWithNamesAndTypes";

/// Passes an answer in `sqlRowsFormat` to `rows`. Integers up to 63 bits and numbers with a fraction are
/// numbers, NULL becomes an absent value, everything else is text; arrays are texts such as "['a','b']".
/// Errors: throws TStoreError for a text in another format, which a query can choose.
void PassSqlRows(std::string_view text, ISqlRows& rows);

}  // namespace NFLEET
