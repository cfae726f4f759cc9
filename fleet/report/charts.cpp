#include "fleet/report/charts.h"

#include "inventory/report/report_tables.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <iterator>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

constexpr double fullWidth = 100;
constexpr double minWidth = 0.8;  // so that a bar of 1 stays visible

// Returns a number with two decimals, in the same digits in every locale.
std::string FormatLength(double length) {
    const auto hundredths = static_cast<long>(length * 100 + 0.5);
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%ld.%02ld", hundredths / 100, hundredths % 100);
    return text.data();
}

double Scale(std::size_t count, std::size_t whole) {
    const double width = whole == 0 ? 0 : fullWidth * static_cast<double>(count) / static_cast<double>(whole);
    return count == 0 ? 0 : std::max(width, minWidth);
}

THtmlWriter::TElement BeginBar(THtmlWriter& html) {
    return html.Element("svg", {{"viewBox", "0 0 100 10"},
                                {"preserveAspectRatio", "none"},
                                {"class", "meter"},
                                {"aria-hidden", "true"}});
}

void WriteRectangle(THtmlWriter& html, std::string_view look, double x, double width) {
    html.Void("rect",
              {{"class", look}, {"x", FormatLength(x)}, {"width", FormatLength(width)}, {"height", "10"}});
}

void WriteLabel(TSitePage& page, const TChartRow& row) {
    THtmlWriter& html = page.GetHtml();
    const auto head = html.Element("th", {{"scope", "row"}});
    {
        const auto mark = html.Element("span", {{"class", row.isOdd ? "other" : "plain"}});
        if (row.path.empty() || row.label.empty()) {
            NINVENTORY::WriteKnown(html, row.label);
        } else {
            page.LinkValue(row.path, row.label);
        }
    }
    if (!row.remark.empty()) {
        const auto remark = html.Element("span", {{"class", "made"}});
        html.Value(row.remark);
    }
}

void WriteRow(TSitePage& page, const TChartRow& row, std::size_t largest) {
    THtmlWriter& html = page.GetHtml();
    const auto element = html.Element("tr");
    WriteLabel(page, row);
    html.Leaf("td", {{"class", "number"}}, std::to_string(row.count));
    const auto cell = html.Element("td", {{"class", "draw"}});
    const auto bar = BeginBar(html);
    WriteRectangle(html, row.isOdd ? "b3" : "b1", 0, Scale(row.count, largest));
}

}  // namespace

void WriteChart(TSitePage& page, const TChart& chart) {
    THtmlWriter& html = page.GetHtml();
    std::size_t largest = 0;
    for (const TChartRow& row : chart.rows) {
        largest = std::max(largest, row.count);
    }
    const auto table = html.Element("table", {{"class", "chart"}});
    html.Leaf("caption", chart.caption);
    {
        const auto head = html.Element("thead");
        const auto row = html.Element("tr");
        html.Leaf("th", {{"scope", "col"}}, chart.labelTitle);
        html.Leaf("th", {{"scope", "col"}, {"class", "number"}}, chart.countTitle);
        html.Leaf("td", "");
    }
    const auto body = html.Element("tbody");
    for (const TChartRow& row : chart.rows) {
        WriteRow(page, row, largest);
    }
}

void WriteStackedBar(THtmlWriter& html, const std::vector<std::size_t>& parts, std::size_t whole) {
    constexpr std::array<std::string_view, 3> looks = {"b1", "b2", "b3"};
    const auto bar = BeginBar(html);
    double x = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const double width = Scale(parts[i], whole);
        WriteRectangle(html, looks[i % looks.size()], x, width);
        x += width;
    }
}

void WriteMarks(THtmlWriter& html, std::size_t agree, std::size_t others) {
    constexpr std::size_t maxMarks = 60;
    constexpr std::size_t pitch = 4;
    const std::size_t count = agree + others + 1;
    const std::string label = std::to_string(agree) + " of " + std::to_string(agree + others) +
                              " others have the usual value; this machine does not";
    const std::size_t drawn = std::min(count, maxMarks);
    const std::size_t shortOnes = count == drawn ? others
                                  : others == 0  ? 0
                                                 : std::max<std::size_t>(1, others * drawn / count);
    const std::string width = std::to_string(drawn * pitch);
    const auto picture = html.Element("svg", {{"viewBox", "0 0 " + width + " 12"},
                                              {"width", width},
                                              {"height", "12"},
                                              {"class", "marks"},
                                              {"role", "img"},
                                              {"aria-label", label}});
    std::array<std::string, 3> paths;
    for (std::size_t i = 0; i < drawn; ++i) {
        const std::size_t look = i + 1 == drawn ? 2 : i + 1 + shortOnes < drawn ? 0 : 1;
        paths.at(look) += "M" + std::to_string(i * pitch + 1) + (look == 0 ? " 0v12" : " 6v6");
    }
    constexpr std::array<std::string_view, 3> looks = {"agree", "differ", "self"};
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (!paths.at(i).empty()) {
            html.Void("path", {{"class", looks.at(i)}, {"d", paths.at(i)}});
        }
    }
}

std::vector<TChartRow> Shorten(std::vector<TChartRow> rows, std::size_t limit, std::string_view restName) {
    if (rows.size() <= limit) {
        return rows;
    }
    std::vector<std::size_t> counts;
    std::ranges::transform(rows, std::back_inserter(counts), &TChartRow::count);
    std::ranges::sort(counts, std::greater());
    const std::size_t smallest = counts.at(limit - 1);
    std::vector<TChartRow> kept;
    std::size_t others = 0;
    std::size_t rest = 0;
    for (TChartRow& row : rows) {
        if (row.count >= smallest && kept.size() < limit) {
            kept.push_back(std::move(row));
        } else {
            ++others;
            rest += row.count;
        }
    }
    kept.push_back({std::to_string(others) + " " + std::string(restName), rest});
    return kept;
}

}  // namespace NFLEET
