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

void TTextTable::Write(std::ostream& out) const {
    const std::vector<TColumn> columns = LayOut();
    if (layout_.hasColour) {
        out << "\x1B[1m";
    }
    WriteRow(out, columns, titles_);
    if (layout_.hasColour) {
        out << "\x1B[0m";
    }
    for (const auto& row : rows_) {
        WriteRow(out, columns, row);
    }
}

std::vector<TTextTable::TColumn> TTextTable::LayOut() const {
    std::vector<TColumn> columns;
    std::size_t used = 0;
    for (std::size_t index = 0; index < titles_.size(); ++index) {
        std::size_t width = 0;
        for (const auto& row : rows_) {
            width = std::max(width, CountColumns(row[index]));
        }
        if (width == 0) {
            continue;
        }
        width = std::max(width, CountColumns(titles_[index]));
        const bool fits = layout_.width == 0 || used + gap + width <= layout_.width;
        const bool beginsLine = columns.empty() || !fits;
        used = columns.empty() ? width : beginsLine ? indentation + width : used + gap + width;
        columns.push_back({index, width, beginsLine});
    }
    return columns;
}

void TTextTable::WriteRow(std::ostream& out, const std::vector<TColumn>& columns,
                          const std::vector<std::string>& cells) const {
    TLine line(out);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto& [index, width, beginsLine] = columns[i];
        if (beginsLine && i > 0) {
            line.End();
            line.Pad(indentation);
        }
        const std::string& cell = cells[index];
        line.Write(cell);
        line.Pad(width - std::min(width, CountColumns(cell)) + gap);
    }
    line.End();
}

}  // namespace NINVENTORY
