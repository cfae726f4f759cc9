// What is worth a look: outliers, and identities that several machines have.
#pragma once

#include "fleet/report/list_pages.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace NFLEET {

inline constexpr std::string_view outliersPath = "outliers.html";
inline constexpr std::string_view duplicatesPath = "duplicates.html";

/// Writes a table of outliers. `hasMachine` is false on the page of one machine.
void WriteOutlierTable(TSitePage& page, const TSite& site, std::span<const TOutlier> outliers,
                       bool hasMachine);

/// Writes a table of identities that several machines have.
void WriteDuplicateTable(TSitePage& page, const TSite& site, std::span<const TDuplicate> duplicates);

/// Writes the lists of all outliers and of all such identities.
void WriteNotablePages(ISiteFiles& files, const TSite& site);

}  // namespace NFLEET
