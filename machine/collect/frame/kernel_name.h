// Kernel names that consist of a word and a number: "sr0", "card1", "cpu12".
#pragma once

#include "machine/system/system_files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Returns the number that follows `prefix` in `name`: 12 for "cpu12" and "cpu". Returns nullopt if `name`
/// has another beginning or does not end with the number, as in "card0-VGA-1".
std::optional<std::uint32_t> FindNumberAfter(std::string_view name, std::string_view prefix);

/// Returns the entries of `folder` that consist of `prefix` and a number, in the order of the listing.
std::vector<std::string> ListNumbered(const ISystemFiles& files, std::string_view folder,
                                      std::string_view prefix);

}  // namespace NVORHOST
