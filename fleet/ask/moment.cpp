#include "fleet/ask/moment.h"

#include "text/numbers.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <iterator>

namespace NFLEET {
namespace {

using NVORHOST::ParseNumber;

constexpr std::size_t dateLength = 10;
constexpr std::size_t timeLength = 19;
constexpr TSeconds maxSpan = TSeconds{100} * 366 * 86400;

struct TUnit {
    char symbol;
    TSeconds seconds;
};
constexpr TUnit units[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}, {'w', 604800}};

std::optional<TSeconds> ParseSpan(std::string_view text) {
    const auto* const unit = std::ranges::find(units, text.empty() ? '\0' : text.back(), &TUnit::symbol);
    if (unit == std::end(units)) {
        return std::nullopt;
    }
    const auto number = ParseNumber<std::uint32_t>(text.substr(0, text.size() - 1));
    if (!number || *number > maxSpan / unit->seconds) {
        return std::nullopt;
    }
    return *number * unit->seconds;
}

// True if the text has a digit for each "0" of `form`, and the other characters of it.
bool HasForm(std::string_view text, std::string_view form) {
    return std::ranges::equal(text, form, [](char c, char expected) {
        return expected == '0' ? c >= '0' && c <= '9' : c == expected;
    });
}

TSeconds GetNumber(std::string_view text, std::size_t at, std::size_t size) {
    return ParseNumber<std::uint32_t>(text.substr(at, size)).value_or(0);
}

std::optional<TSeconds> ParseDate(std::string_view text) {
    if (!HasForm(text, "0000-00-00")) {
        return std::nullopt;
    }
    const auto date = std::chrono::year(static_cast<int>(GetNumber(text, 0, 4))) /
                      std::chrono::month(static_cast<unsigned>(GetNumber(text, 5, 2))) /
                      std::chrono::day(static_cast<unsigned>(GetNumber(text, 8, 2)));
    if (!date.ok()) {
        return std::nullopt;
    }
    return std::chrono::sys_seconds(std::chrono::sys_days(date)).time_since_epoch().count();
}

// Returns the offset from UTC in seconds.
std::optional<TSeconds> ParseOffset(std::string_view text) {
    if (text == "Z" || text == "z") {
        return 0;
    }
    if (!HasForm(text, "+00:00") && !HasForm(text, "-00:00")) {
        return std::nullopt;
    }
    const TSeconds offset = GetNumber(text, 1, 2) * 3600 + GetNumber(text, 4, 2) * 60;
    return text.front() == '-' ? -offset : offset;
}

std::optional<TSeconds> ParseTime(std::string_view text) {
    if (text.size() <= timeLength || (text[dateLength] != 'T' && text[dateLength] != ' ') ||
        !HasForm(text.substr(dateLength + 1, 8), "00:00:00")) {
        return std::nullopt;
    }
    const auto date = ParseDate(text.substr(0, dateLength));
    const auto offset = ParseOffset(text.substr(timeLength));
    const TSeconds hour = GetNumber(text, 11, 2);
    const TSeconds minute = GetNumber(text, 14, 2);
    const TSeconds second = GetNumber(text, 17, 2);
    if (!date || !offset || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    return *date + hour * 3600 + minute * 60 + second - *offset;
}

}  // namespace

std::optional<TSeconds> ParseMoment(std::string_view text, TSeconds now) {
    if (const auto span = ParseSpan(text)) {
        return now - *span;
    }
    return text.size() == dateLength ? ParseDate(text) : ParseTime(text);
}

std::string FormatMoment(TSeconds moment) {
    const std::chrono::sys_seconds time{std::chrono::seconds(moment)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::array<char, 48> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                      static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace NFLEET
