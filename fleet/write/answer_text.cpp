#include "fleet/ask/moment.h"
#include "fleet/write/answer_writer.h"
#include "text/shown_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <variant>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TTextLayout;
using NVORHOST::MakeVisible;

struct TShowCell {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
        std::array<char, 32> text{};
        return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
    }
    std::string operator()(const TMoment& moment) const { return FormatMoment(moment.seconds); }
    std::string operator()(const std::string& text) const { return MakeVisible(text); }
    std::string operator()(const TShownValue& value) const { return MakeVisible(value.shown); }
};

std::string Show(const TCell& cell) {
    return std::visit(TShowCell{}, cell);
}

}  // namespace

void WriteAnswerText(const TAnswer& answer, const TTextLayout& layout, std::ostream& out) {
    std::vector<NINVENTORY::TTextColumn> columns;
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < answer.columns.size(); ++i) {
        if (!answer.columns[i].title.empty()) {
            columns.emplace_back(MakeVisible(answer.columns[i].title), answer.columns[i].isMinor, "");
            shown.push_back(i);
        }
    }
    NINVENTORY::TTextTable table(std::move(columns), layout);
    for (const std::vector<TCell>& row : answer.rows) {
        std::vector<std::string> cells;
        for (const std::size_t i : shown) {
            cells.push_back(Show(row[i]));
        }
        table.AddRow(std::move(cells));
    }
    if (table.IsEmpty()) {
        out << answer.emptyText << '\n';
    } else {
        table.Write(out);
    }
    for (const std::string& note : answer.notes) {
        out << note << '\n';
    }
}

void WriteFactsText(const TAnswer& answer, const TTextLayout& layout, std::ostream& out) {
    constexpr std::size_t gap = 2;
    std::size_t width = 0;
    for (const TAnswerColumn& column : answer.columns) {
        width = std::max(width, column.title.size());
    }
    for (std::size_t i = 0; i < answer.columns.size(); ++i) {
        const std::string& title = answer.columns[i].title;
        const std::string text = Show(answer.rows.front()[i]);
        if (title.empty() || text.empty()) {
            continue;
        }
        std::string label = title + std::string(width + gap - title.size(), ' ');
        const std::size_t rest = layout.width > label.size() + 1 ? layout.width - label.size() : text.size();
        for (const std::string& line : NINVENTORY::WrapText(text, rest)) {
            out << label << line << '\n';
            label.assign(label.size(), ' ');
        }
    }
}

}  // namespace NFLEET
