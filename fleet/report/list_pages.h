// Lists over as many pages as it takes for each of them to open at once.
#pragma once

#include "fleet/report/site_page.h"

#include <cstddef>
#include <functional>
#include <string>

namespace NFLEET {

struct TListPages {
    std::string path;   ///< path of the first page; those of the others have numbers
    std::string title;  ///< title of the window
    std::size_t rows = 0;
    std::size_t rowsPerPage = 0;
    bool hasScript = false;
    /// Writes what is above the table of each page.
    std::function<void(TSitePage& page)> writeHead;
    /// Writes the table of some rows: from `begin` up to, but not including, `end`.
    std::function<void(TSitePage& page, std::size_t begin, std::size_t end)> writeRows;
    /// Returns the text of a row by which people find it in a directory of the pages; null for no directory.
    std::function<std::string(std::size_t row)> nameRow{};
};

std::size_t CountPages(const TListPages& list);

/// Writes all pages; one page without a table if there are no rows.
void WriteListPages(ISiteFiles& files, const TSite& site, const TListPages& list);

/// Writes a link to each page, named by its first and last row.
void WriteDirectory(TSitePage& page, const TListPages& list);

}  // namespace NFLEET
