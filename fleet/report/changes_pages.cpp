#include "fleet/report/changes_pages.h"

#include "fleet/report/list_pages.h"
#include "inventory/compare/part.h"
#include "inventory/report/report_tables.h"
#include "inventory/write/part_words.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;
using NINVENTORY::WriteKnown;

constexpr std::size_t rowsPerPage = 500;
constexpr TDay chartDays = 30;

struct TKindRow {
    std::string_view title, explanation;
};

// In the order of EChangeKind.
constexpr std::array<TKindRow, changeKinds> kinds{{
    {"Parts", "added, removed, replaced, moved or changed"},
    {"Firmware", "of systems and parts"},
    {"System", "operating system, file systems and addresses"},
}};

// Types that describe the running system, not the machine.
constexpr std::string_view systemTypes[] = {"IPProtocolEndpoint", "LocalFileSystem", "NOXSystemInfo",
                                            "NetworkPort",        "OperatingSystem", "SecuritySetting",
                                            "DiskPartition",      "ComputerSystem"};
constexpr std::string_view firmwareProperties[] = {"FirmwareVersion", "Firmware revision"};

bool IsSameDifference(const TChangeRow& left, const TChangeRow& right) {
    return left.time == right.time && left.resourceId == right.resourceId && left.type == right.type &&
           left.change == right.change && left.part == right.part && !left.property.empty() &&
           !right.property.empty();
}

void WriteProperty(THtmlWriter& html, const TChangeRow& row) {
    const auto element = html.Element("div");
    html.Value(NINVENTORY::LabelProperty(row.type, row.property));
    html.Text(": ");
    WriteKnown(html, ShowCell(row.before));
    html.Text(" \u2192 ");
    WriteKnown(html, ShowCell(row.after));
}

// The bars of one kind of change over the days of the chart.
void WriteDaysRow(TSitePage& page, const TSite& site, TDay first, std::size_t kind) {
    THtmlWriter& html = page.GetHtml();
    std::size_t sum = 0;
    std::size_t largest = 0;
    for (TDay day = first; day < first + chartDays; ++day) {
        const auto found = site.days.find(day);
        const std::size_t count = found == site.days.end() ? 0 : found->second.changes.at(kind);
        sum += count;
        largest = std::max(largest, count);
    }
    const std::string words = std::to_string(sum) + " in all, at most " + std::to_string(largest) + " a day";
    {
        const auto name = html.Element("dt");
        html.Leaf("b", kinds.at(kind).title);
        html.Text(" " + words);
    }
    const auto description = html.Element("dd");
    const std::string label = std::string(kinds.at(kind).title) + ", 30 days: " + words;
    const auto picture = html.Element("svg", {{"viewBox", "0 0 300 100"},
                                              {"preserveAspectRatio", "none"},
                                              {"role", "img"},
                                              {"aria-label", label}});
    for (TDay day = first; day < first + chartDays; ++day) {
        constexpr TDay dayOfSaturday = 2;  // 1970-01-03
        const std::int64_t x = (day - first) * 10;
        const auto found = site.days.find(day);
        const TDay weekday = ((day - dayOfSaturday) % 7 + 7) % 7;
        if (found == site.days.end() || found->second.inventories == 0) {
            html.Void("path", {{"class", "gap"},
                               {"d", "M" + std::to_string(x) + " 100l10 -33m-10 0l10 -33m-10 0l10 -33"}});
        } else if (weekday < 2) {
            html.Void("rect", {{"class", "weekend"}, {"x", x}, {"width", 10}, {"height", 100}});
        }
        const std::size_t count = found == site.days.end() ? 0 : found->second.changes.at(kind);
        if (count > 0) {
            const auto height = static_cast<std::int64_t>(std::max<std::size_t>(3, count * 100 / largest));
            html.Void("rect",
                      {{"class", "b1"}, {"x", x + 1}, {"y", 100 - height}, {"width", 8}, {"height", height}});
        }
    }
}

void WriteAxis(TSitePage& page, TDay first) {
    THtmlWriter& html = page.GetHtml();
    const auto axis = html.Element("ol", {{"class", "axis"}, {"aria-hidden", "true"}});
    for (const TDay day : {first, first + chartDays / 2, first + chartDays - 1}) {
        html.Leaf("li", FormatDay(day));
    }
}

// A day of the list of days.
struct TListedDay {
    TDay day = 0;
    const TDayFigures* figures = nullptr;
};

std::vector<TListedDay> ListDays(const TSite& site) {
    std::vector<TListedDay> days;
    for (const auto& [day, figures] : site.days) {
        days.push_back({day, &figures});
    }
    std::ranges::reverse(days);
    return days;
}

void WriteDayCells(TSitePage& page, const TListedDay& day) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr");
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        if (day.figures->GetChanges() > 0) {
            page.LinkText(GetDayPath(day.day), FormatDay(day.day));
        } else {
            html.Text(FormatDay(day.day));
        }
    }
    for (std::size_t kind = 0; kind < changeKinds; ++kind) {
        html.Leaf("td", {{"class", "number"}, {"data-title", kinds.at(kind).title}},
                  std::to_string(day.figures->changes.at(kind)));
    }
    html.Leaf("td", {{"class", "number"}, {"data-title", "Inventories"}},
              std::to_string(day.figures->inventories));
}

TListPages MakeDaysList(const TSite& site, const std::vector<TListedDay>& days) {
    TListPages list;
    list.path = changesPath;
    list.title = "Changes by day";
    list.rows = days.size();
    list.rowsPerPage = rowsPerPage;
    list.nameRow = [&days](std::size_t row) { return FormatDay(days[row].day); };
    list.writeHead = [&site, &days](TSitePage& page) {
        page.GetHtml().Leaf("h1", "Changes by day");
        page.GetHtml().Leaf("p", {{"class", "lead"}},
                            CountOf(days.size(), "day", "days") + " with inventories, the newest first");
        WriteDaysChart(page, site);
    };
    list.writeRows = [&days](TSitePage& page, std::size_t begin, std::size_t end) {
        THtmlWriter& html = page.GetHtml();
        const auto table = html.Element("table");
        html.Leaf("caption", "Days in UTC; a change is that of one part or of the system of one machine");
        WriteColumns(html, {"Day", "#Parts", "#Firmware", "#System", "#Inventories"});
        const auto body = html.Element("tbody");
        for (std::size_t i = begin; i < end; ++i) {
            WriteDayCells(page, days[i]);
        }
    };
    return list;
}

std::string DescribeDay(const TDayFigures& figures) {
    std::string text = CountOf(figures.GetChanges(), "change", "changes");
    const char* separator = ": ";
    for (std::size_t kind = 0; kind < changeKinds; ++kind) {
        if (figures.changes.at(kind) > 0) {
            text += separator + std::to_string(figures.changes.at(kind)) + " of " +
                    (kind == 0   ? "parts"
                     : kind == 1 ? "firmware"
                                 : "systems");
            separator = ", ";
        }
    }
    return text;
}

// Links to the days with changes before and after this one.
void WriteDayNeighbours(TSitePage& page, const TSite& site, TDay day) {
    THtmlWriter& html = page.GetHtml();
    const auto navigation = html.Element("nav", {{"class", "pager"}, {"aria-label", "Days"}});
    const auto items = html.Element("ul");
    const auto hasChanges = [](const auto& entry) { return entry.second.GetChanges() > 0; };
    const auto here = site.days.find(day);
    const auto before = std::find_if(std::make_reverse_iterator(here), site.days.rend(), hasChanges);
    if (before != site.days.rend()) {
        const auto item = html.Element("li");
        page.LinkText(GetDayPath(before->first), "before: " + FormatDay(before->first));
    }
    const auto after = std::find_if(std::next(here), site.days.end(), hasChanges);
    if (after != site.days.end()) {
        const auto item = html.Element("li");
        page.LinkText(GetDayPath(after->first), "after: " + FormatDay(after->first));
    }
    const auto item = html.Element("li");
    page.LinkText(changesPath, "all days");
}

void WriteDay(ISiteFiles& files, const TSite& site, const TDaySpool& spool, const TListedDay& day) {
    TListPages list;
    list.path = GetDayPath(day.day);
    list.title = "Changes on " + FormatDay(day.day);
    list.rows = spool.CountRows(day.day);
    list.rowsPerPage = rowsPerPage;
    list.writeHead = [&](TSitePage& page) {
        page.GetHtml().Leaf("h1", "Changes on " + FormatDay(day.day));
        page.GetHtml().Leaf("p", {{"class", "lead"}}, DescribeDay(*day.figures));
        WriteDayNeighbours(page, site, day.day);
    };
    list.writeRows = [&](TSitePage& page, std::size_t begin, std::size_t end) {
        THtmlWriter& html = page.GetHtml();
        const auto table = html.Element("table", {{"class", "wide"}});
        html.Leaf("caption", "By machine; the time is that of the first inventory with the change, in UTC");
        WriteColumns(html, {"Machine", "Time", "Change", "Part", "Before and now"});
        const auto body = html.Element("tbody");
        html.Markup(spool.Read(day.day, begin, end));
    };
    WriteListPages(files, site, list);
}

}  // namespace

EChangeKind GetKind(const TChangeRow& row) {
    if (NINVENTORY::GetPartType(row.type).isFirmware ||
        std::ranges::find(firmwareProperties, row.property) != std::end(firmwareProperties)) {
        return EChangeKind::firmware;
    }
    return std::ranges::find(systemTypes, row.type) != std::end(systemTypes) ? EChangeKind::system
                                                                             : EChangeKind::part;
}

std::vector<TDifferenceRows> GroupDifferences(std::span<const TChangeRow> rows) {
    std::vector<TDifferenceRows> differences;
    for (std::size_t begin = 0; begin < rows.size();) {
        std::size_t end = begin + 1;
        while (end < rows.size() && IsSameDifference(rows[begin], rows[end])) {
            ++end;
        }
        differences.push_back(rows.subspan(begin, end - begin));
        begin = end;
    }
    return differences;
}

void WriteDifferenceCells(TSitePage& page, TDifferenceRows rows) {
    THtmlWriter& html = page.GetHtml();
    const TChangeRow& first = rows.front();
    html.Leaf("td", {{"data-title", "Change"}}, first.change);
    {
        const auto part = html.Element("td", {{"data-title", "Part"}});
        const auto words = html.Element("div");
        html.Value(first.part);
        if (!first.identity.empty()) {
            html.Text(" ");
            const auto code = html.Element("code");
            html.Value(first.identity);
        }
    }
    const auto values = html.Element("td", {{"data-title", "Before and now"}});
    const auto list = html.Element("div");
    for (const TChangeRow& row : rows) {
        if (!row.property.empty()) {
            WriteProperty(html, row);
        }
    }
}

std::vector<TDayRow> MakeDayRows(const TSiteMachine& machine, std::span<const TDifferenceRows> differences) {
    std::vector<TDayRow> rows;
    for (const TDifferenceRows& difference : differences) {
        const TChangeRow& first = difference.front();
        const TDay day = GetDay(first.time);
        const std::string path = GetDayPath(day);
        std::ostringstream markup;
        TSitePage page(path, markup);
        {
            const auto row = page.GetHtml().Element("tr");
            {
                const auto head = page.GetHtml().Element("th", {{"scope", "row"}});
                page.LinkMachine(machine);
            }
            {
                const auto time = page.GetHtml().Element("td", {{"data-title", "Time"}});
                page.Clock(first.time);
            }
            WriteDifferenceCells(page, difference);
        }
        rows.push_back({day, GetKind(first), NINVENTORY::TMarkup::FromWriter(markup.str())});
    }
    return rows;
}

TDaySpool::TDaySpool() : file_(std::tmpfile()) {
    if (file_ == nullptr) {
        throw std::runtime_error("cannot make a temporary file");
    }
}

void TDaySpool::Add(const TDayRow& row) {
    const std::string& bytes = row.markup.GetBytes();
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
        throw std::runtime_error("cannot write to a temporary file");
    }
    places_[row.day].push_back({size_, static_cast<std::uint32_t>(bytes.size())});
    size_ += bytes.size();
}

std::size_t TDaySpool::CountRows(TDay day) const {
    const auto found = places_.find(day);
    return found == places_.end() ? 0 : found->second.size();
}

NINVENTORY::TMarkup TDaySpool::Read(TDay day, std::size_t begin, std::size_t end) const {
    std::string text;
    for (std::size_t i = begin; i < end; ++i) {
        const TPlace& place = places_.at(day).at(i);
        const std::size_t at = text.size();
        text.resize(at + place.size);
        if (std::fseek(file_.get(), static_cast<long>(place.offset), SEEK_SET) != 0 ||
            std::fread(text.data() + at, 1, place.size, file_.get()) != place.size) {
            throw std::runtime_error("cannot read a temporary file");
        }
    }
    return NINVENTORY::TMarkup::FromWriter(std::move(text));
}

void WriteDaysChart(TSitePage& page, const TSite& site) {
    THtmlWriter& html = page.GetHtml();
    const TDay first = GetDay(site.now) - chartDays + 1;
    const auto figure = html.Element("figure", {{"class", "keep"}});
    {
        const auto rows = html.Element("dl", {{"class", "days"}});
        for (std::size_t kind = 0; kind < changeKinds; ++kind) {
            WriteDaysRow(page, site, first, kind);
        }
    }
    WriteAxis(page, first);
    html.Leaf("figcaption",
              "30 days. Each row has its own scale, from 0 to its highest day. Grey: Saturdays and Sundays; "
              "hatched: days without inventories. System: operating system, file systems and addresses.");
}

void WriteChangesPages(ISiteFiles& files, const TSite& site, const TDaySpool& spool) {
    const std::vector<TListedDay> days = ListDays(site);
    WriteListPages(files, site, MakeDaysList(site, days));
    for (const TListedDay& day : days) {
        if (spool.CountRows(day.day) > 0) {
            WriteDay(files, site, spool, day);
        }
    }
}

}  // namespace NFLEET
