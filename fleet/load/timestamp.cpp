#include "fleet/load/timestamp.h"

#include "text/ascii.h"
#include "text/numbers.h"

#include <algorithm>
#include <chrono>

namespace NFLEET {
namespace {

constexpr std::string_view form = "0000-00-00T00:00:00";
constexpr std::string_view offsetForm = "00:00";
constexpr TSeconds secondsOfDay = 86400;
constexpr TSeconds hour = 3600;
constexpr TSeconds minute = 60;

bool HasForm(std::string_view text, std::string_view expected) {
    return std::ranges::equal(
        text, expected, [](char c, char place) { return place == '0' ? NVORHOST::IsDigit(c) : c == place; });
}

// The text must consist of digits.
unsigned GetNumber(std::string_view text, std::size_t at, std::size_t length) {
    return NVORHOST::ParseNumber<unsigned>(text.substr(at, length)).value_or(0);
}

std::optional<TSeconds> ParseOffset(std::string_view text) {
    if (text.empty() || text == "Z") {
        return 0;
    }
    if ((text.front() != '+' && text.front() != '-') || !HasForm(text.substr(1), offsetForm)) {
        return std::nullopt;
    }
    const TSeconds offset = GetNumber(text, 1, 2) * hour + GetNumber(text, 4, 2) * minute;
    return text.front() == '+' ? offset : -offset;
}

}  // namespace

std::optional<TSeconds> ParseTimestamp(std::string_view text) {
    if (text.size() < form.size() || !HasForm(text.substr(0, form.size()), form)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(GetNumber(text, 0, 4))),
                                           std::chrono::month(GetNumber(text, 5, 2)),
                                           std::chrono::day(GetNumber(text, 8, 2)));
    const TSeconds time =
        GetNumber(text, 11, 2) * hour + GetNumber(text, 14, 2) * minute + GetNumber(text, 17, 2);
    const auto offset = ParseOffset(text.substr(form.size()));
    if (!date.ok() || time > secondsOfDay || !offset) {
        return std::nullopt;
    }
    const TSeconds seconds =
        std::chrono::sys_days(date).time_since_epoch().count() * secondsOfDay + time - *offset;
    return seconds < secondsOfDay ? std::nullopt : std::optional(seconds);
}

}  // namespace NFLEET
