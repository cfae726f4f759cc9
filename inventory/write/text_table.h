// Tables for terminals.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// How text is laid out.
struct TTextLayout {
    std::size_t width = 0;  ///< columns of the terminal; 0 for no limit
    bool hasColour = false;
    bool isUtf8 = true;
};

/// Returns the number of terminal columns that UTF-8 text takes; malformed bytes and controls count as none.
std::size_t CountColumns(std::string_view text);

/// Returns the text as lines of at most `width` columns, which is not 0. Lines end at blanks; a word that is
/// wider than a line is divided.
std::vector<std::string> WrapText(std::string_view text, std::size_t width);

struct TTextColumn {
    TTextColumn(const char* columnTitle) : title(columnTitle) {}
    TTextColumn(std::string columnTitle, bool isMinorColumn, std::string besideTitle)
        : title(std::move(columnTitle)), isMinor(isMinorColumn), minorBeside(std::move(besideTitle)) {}

    std::string title;
    bool isMinor = false;     ///< left out if the table does not fit the width, the last ones first
    std::string minorBeside;  ///< title of a column; minor if that one has text
};

/// A table with aligned columns. If they do not fit the width, minor columns are left out. If the others do
/// not fit either, the cells of the widest column are wrapped, or if that one would be too narrow then,
/// columns continue on indented lines below their row.
class TTextTable {
  public:
    TTextTable(std::vector<TTextColumn> columns, TTextLayout layout)
        : described_(std::move(columns)), layout_(layout) {}

    /// `cells` are visible text, one for each title.
    void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool IsEmpty() const { return rows_.empty(); }
    std::size_t GetRowCount() const { return rows_.size(); }

    /// Writes titles and rows. Columns without any text are left out.
    void Write(std::ostream& out) const;

  private:
    struct TColumn {
        std::size_t index;
        std::size_t width;
        bool beginsLine = false;
        bool isWrapped = false;
    };

    static std::size_t SumWidths(const std::vector<TColumn>& columns);
    std::vector<TColumn> Measure() const;
    bool IsMinor(const TColumn& column, const std::vector<TColumn>& columns) const;
    void LeaveOutMinor(std::vector<TColumn>& columns) const;
    std::size_t WidestWord(std::size_t index) const;
    bool WrapWidest(std::vector<TColumn>& columns) const;
    void ContinueBelow(std::vector<TColumn>& columns) const;
    std::vector<TColumn> LayOut() const;
    static void WriteRow(std::ostream& out, const std::vector<TColumn>& columns,
                         const std::vector<std::string>& cells);

    std::vector<TTextColumn> described_;
    TTextLayout layout_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace NINVENTORY
