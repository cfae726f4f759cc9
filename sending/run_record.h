// The text file in each run of a spool that holds the values of its URL.
#pragma once

#include "sending/url_template.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Where a waiting run is to be sent.
struct TRunRecord {
    std::string url;  ///< template for which the run was collected
    TUrlValues values;
};

/// Returns the lines "NAME=VALUE" of the record. Line ends and other invisible characters of values are
/// escaped.
std::string FormatRunRecord(const TRunRecord& record);

/// Parses the text of FormatRunRecord. Lines with other names are skipped, so that a later version may add
/// some. Returns nullopt if a line is missing or duplicate, or if the text does not end with a line end.
std::optional<TRunRecord> ParseRunRecord(std::string_view text);

}  // namespace NVORHOST
