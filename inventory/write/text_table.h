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

/// A table with aligned columns. Cells are shown whole: columns that do not fit the width continue on
/// indented lines below their row.
class TTextTable {
  public:
    TTextTable(std::vector<std::string> titles, TTextLayout layout)
        : titles_(std::move(titles)), layout_(layout) {}

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
    };

    std::vector<TColumn> LayOut() const;
    void WriteRow(std::ostream& out, const std::vector<TColumn>& columns,
                  const std::vector<std::string>& cells) const;

    std::vector<std::string> titles_;
    TTextLayout layout_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace NINVENTORY
