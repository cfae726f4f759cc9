// Charts that are tables with a bar in each row, so that they read without the picture, fold, print and copy.
#pragma once

#include "fleet/report/site_page.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

struct TChartRow {
    std::string label;  ///< text from inventories; empty for unknown
    std::size_t count = 0;
    std::string remark{};  ///< below the label
    std::string path{};    ///< page that the label links to; empty for none
    bool isOdd = false;    ///< worth a look
};

struct TChart {
    std::string caption;
    std::string labelTitle;
    std::string countTitle;
    std::vector<TChartRow> rows;
};

/// Writes a chart. All bars have one scale, from 0.
void WriteChart(TSitePage& page, const TChart& chart);

/// Writes a bar of several parts, drawn in the classes "b1", "b2" and "b3" in turn.
void WriteStackedBar(NINVENTORY::THtmlWriter& html, const std::vector<std::size_t>& parts, std::size_t whole);

/// Writes one mark for each machine of a model: `agree` tall ones, then `others` short ones, then one for the
/// machine itself. Many machines become one bar in the same proportions.
void WriteMarks(NINVENTORY::THtmlWriter& html, std::size_t agree, std::size_t others);

/// Returns the rows with the most, in the given order, and one for the rest if there are more than `limit`.
std::vector<TChartRow> Shorten(std::vector<TChartRow> rows, std::size_t limit, std::string_view restName);

}  // namespace NFLEET
