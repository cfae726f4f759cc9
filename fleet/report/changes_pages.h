// Changes by day, and the rows in which changes are shown.
#pragma once

#include "fleet/ask/machine_changes.h"
#include "fleet/report/site_page.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace NFLEET {

EChangeKind GetKind(const TChangeRow& row);

/// The rows of one difference: one for each property, or one for a whole resource.
using TDifferenceRows = std::span<const TChangeRow>;

/// Divides changes, which are in the order of FindChanges, into differences.
std::vector<TDifferenceRows> GroupDifferences(std::span<const TChangeRow> rows);

/// Writes the cells of a difference: what happened, with which part, and what it was before and is now.
void WriteDifferenceCells(TSitePage& page, TDifferenceRows rows);

/// One difference as a row of the page of its day.
struct TDayRow {
    TDay day = 0;
    EChangeKind kind = EChangeKind::part;
    NINVENTORY::TMarkup markup;
};

/// Returns the rows of the changes of a machine for the pages of days.
std::vector<TDayRow> MakeDayRows(const TSiteMachine& machine, std::span<const TDifferenceRows> differences);

/// The rows of all days, which can be more than fits into memory, in a temporary file.
class TDaySpool {
  public:
    /// Errors: throws std::runtime_error if there is no room for temporary files.
    TDaySpool();

    /// Rows of a day stay in the order in which they are added.
    void Add(const TDayRow& row);
    std::size_t CountRows(TDay day) const;
    /// Returns the rows of a day from `begin` up to `end`.
    NINVENTORY::TMarkup Read(TDay day, std::size_t begin, std::size_t end) const;

  private:
    struct TClose {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };
    struct TPlace {
        std::uint64_t offset;
        std::uint32_t size;
    };

    std::unique_ptr<std::FILE, TClose> file_;
    std::uint64_t size_ = 0;
    std::map<TDay, std::vector<TPlace>> places_;
};

/// Writes the chart of the last 30 days.
void WriteDaysChart(TSitePage& page, const TSite& site);

/// Writes the list of days, and the pages of each.
void WriteChangesPages(ISiteFiles& files, const TSite& site, const TDaySpool& spool);

}  // namespace NFLEET
