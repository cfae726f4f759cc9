// The answer to a question: one table of typed cells, which every format writes.
#pragma once

#include "fleet/model/rows.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace NFLEET {

/// A question that cannot be answered, such as one about a machine that does not exist. The message is one
/// line.
class TQuestionError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A point in time.
struct TMoment {
    TSeconds seconds = 0;

    bool operator==(const TMoment&) const = default;
};

/// A value of a property: with unit and words for people, and as documents have it for programs.
struct TShownValue {
    std::string shown;
    std::string raw;  ///< empty for no value

    bool operator==(const TShownValue&) const = default;
};

/// std::monostate is an unknown value.
using TCell = std::variant<std::monostate, std::int64_t, double, TMoment, std::string, TShownValue>;

struct TAnswerColumn {
    std::string name;      ///< for programs: "resourceType"
    std::string title;     ///< for people: "type"; empty for a column that they do not need
    bool isMinor = false;  ///< left out of text that would be too wide
};

struct TAnswer {
    std::string question;  ///< the command: "machines"
    std::vector<TAnswerColumn> columns;
    std::vector<std::vector<TCell>> rows{};
    std::string emptyText{};           ///< what people read if there are no rows: "no changes"
    std::vector<std::string> notes{};  ///< lines for people, below the table
};

/// Returns a text cell; unknown for an empty text.
inline TCell MakeTextCell(std::string text) {
    return text.empty() ? TCell() : TCell(std::move(text));
}

}  // namespace NFLEET
