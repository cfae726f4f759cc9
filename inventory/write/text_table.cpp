#include "inventory/write/text_table.h"

#include "text/utf8.h"

#include <utf8proc.h>

#include <algorithm>

namespace NINVENTORY {
namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t indentation = 4;

// The blanks of a cell's end are written only when another cell follows on the line.
class TLine {
  public:
    explicit TLine(std::ostream& out) : out_(out) {}

    void Pad(std::size_t count) { pending_.append(count, ' '); }
    void Write(std::string_view text) {
        if (!text.empty()) {
            out_ << pending_ << text;
            pending_.clear();
            isBegun_ = true;
        }
    }
    void End() {
        if (isBegun_) {
            out_ << '\n';
        }
        pending_.clear();
        isBegun_ = false;
    }

  private:
    std::ostream& out_;
    std::string pending_;
    bool isBegun_ = false;
};

}  // namespace

namespace {

// Returns the length in bytes of the first character; 1 for a malformed byte.
std::size_t FirstLength(std::string_view text) {
    const bool isAscii = static_cast<unsigned char>(text.front()) < 0x80;
    return std::max<std::size_t>(isAscii ? 1 : NVORHOST::MultiByteLength(text), 1);
}

// Returns the length in bytes of the beginning that fits a width; at least one character.
std::size_t FittingLength(std::string_view text, std::size_t width) {
    std::size_t length = FirstLength(text);
    std::size_t columns = CountColumns(text.substr(0, length));
    while (length < text.size()) {
        const std::size_t next = FirstLength(text.substr(length));
        columns += CountColumns(text.substr(length, next));
        if (columns > width) {
            break;
        }
        length += next;
    }
    return length;
}

}  // namespace

std::size_t CountColumns(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) {
        const bool isAscii = static_cast<unsigned char>(text.front()) < 0x80;
        const std::size_t length = isAscii ? 1 : NVORHOST::MultiByteLength(text);
        if (length > 0) {
            const auto code = static_cast<utf8proc_int32_t>(NVORHOST::DecodeUtf8(text.substr(0, length)));
            columns += static_cast<std::size_t>(utf8proc_charwidth(code));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return columns;
}

std::vector<std::string> WrapText(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    while (CountColumns(text) > width) {
        const std::size_t fitting = FittingLength(text, width);
        if (fitting == text.size()) {
            break;  // a single character is wider than the line
        }
        const std::size_t blank = text.rfind(' ', fitting);
        const bool isBetweenWords = blank != std::string_view::npos && blank > 0;
        const std::size_t length = isBetweenWords ? blank : fitting;
        lines.emplace_back(text.substr(0, length));
        text.remove_prefix(length + (isBetweenWords ? 1 : 0));
    }
    lines.emplace_back(text);
    return lines;
}

void TTextTable::Write(std::ostream& out) const {
    const std::vector<TColumn> columns = LayOut();
    std::vector<std::string> titles;
    for (const TTextColumn& column : described_) {
        titles.push_back(column.title);
    }
    if (layout_.hasColour) {
        out << "\x1B[1m";
    }
    WriteRow(out, columns, titles);
    if (layout_.hasColour) {
        out << "\x1B[0m";
    }
    for (const auto& row : rows_) {
        WriteRow(out, columns, row);
    }
}

std::vector<TTextTable::TColumn> TTextTable::LayOut() const {
    std::vector<TColumn> columns = Measure();
    if (layout_.width > 0) {
        LeaveOutMinor(columns);
        if (!WrapWidest(columns)) {
            ContinueBelow(columns);
        }
    }
    return columns;
}

std::size_t TTextTable::SumWidths(const std::vector<TColumn>& columns) {
    std::size_t sum = 0;
    for (const TColumn& column : columns) {
        sum += column.width + (sum == 0 ? 0 : gap);
    }
    return sum;
}

// Columns without any text are left out.
std::vector<TTextTable::TColumn> TTextTable::Measure() const {
    std::vector<TColumn> columns;
    for (std::size_t index = 0; index < described_.size(); ++index) {
        std::size_t width = 0;
        for (const auto& row : rows_) {
            width = std::max(width, CountColumns(row[index]));
        }
        if (width > 0) {
            columns.push_back({index, std::max(width, CountColumns(described_[index].title))});
        }
    }
    return columns;
}

bool TTextTable::IsMinor(const TColumn& column, const std::vector<TColumn>& columns) const {
    const TTextColumn& described = described_[column.index];
    return described.isMinor || std::ranges::any_of(columns, [&](const TColumn& other) {
               return described_[other.index].title == described.minorBeside;
           });
}

void TTextTable::LeaveOutMinor(std::vector<TColumn>& columns) const {
    while (SumWidths(columns) > layout_.width) {
        const auto minor = std::find_if(columns.rbegin(), columns.rend(),
                                        [&](const TColumn& column) { return IsMinor(column, columns); });
        if (minor == columns.rend()) {
            return;
        }
        columns.erase(std::next(minor).base());
    }
}

// Returns the width of the widest word of a column and its title.
std::size_t TTextTable::WidestWord(std::size_t index) const {
    std::size_t widest = CountColumns(described_[index].title);
    for (const auto& row : rows_) {
        std::string_view text = row[index];
        while (!text.empty()) {
            const std::string_view word = text.substr(0, text.find(' '));
            widest = std::max(widest, CountColumns(word));
            text.remove_prefix(std::min(text.size(), word.size() + 1));
        }
    }
    return widest;
}

// Returns false if that does not make the columns fit.
bool TTextTable::WrapWidest(std::vector<TColumn>& columns) const {
    constexpr std::size_t narrowest = 24;
    const std::size_t sum = SumWidths(columns);
    if (columns.empty() || sum <= layout_.width) {
        return true;
    }
    TColumn& widest = *std::ranges::max_element(columns, {}, &TColumn::width);
    const std::size_t others = sum - widest.width;
    if (columns.size() == 1 || others + std::max(narrowest, WidestWord(widest.index)) > layout_.width) {
        return false;
    }
    widest.width = layout_.width - others;
    widest.isWrapped = true;
    return true;
}

void TTextTable::ContinueBelow(std::vector<TColumn>& columns) const {
    std::size_t used = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        TColumn& column = columns[i];
        column.beginsLine = i == 0 || used + gap + column.width > layout_.width;
        used = i == 0 ? column.width : (column.beginsLine ? indentation : used + gap) + column.width;
    }
}

void TTextTable::WriteRow(std::ostream& out, const std::vector<TColumn>& columns,
                          const std::vector<std::string>& cells) {
    TLine line(out);
    std::vector<std::string> wrapped;
    std::size_t wrappedAt = 0;  // first terminal column of the wrapped cell
    std::size_t used = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const TColumn& column = columns[i];
        if (column.beginsLine && i > 0) {
            line.End();
            line.Pad(indentation);
        }
        std::string cell = cells[column.index];
        if (column.isWrapped) {
            wrapped = WrapText(cell, column.width);
            wrappedAt = used;
            cell = wrapped.front();
        }
        line.Write(cell);
        line.Pad(column.width - std::min(column.width, CountColumns(cell)) + gap);
        used += column.width + gap;
    }
    line.End();
    for (std::size_t i = 1; i < wrapped.size(); ++i) {
        line.Pad(wrappedAt);
        line.Write(wrapped[i]);
        line.End();
    }
}

}  // namespace NINVENTORY
