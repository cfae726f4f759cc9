#include "text/numbers.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace NVORHOST {

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::uint32_t> ParseRounded(std::string_view text) {
    const std::string_view token = TrimBlanks(text);
    const auto point = token.find('.');
    const auto whole = ParseNumber<std::uint32_t>(token.substr(0, point));
    if (!whole || point == std::string_view::npos) {
        return whole;
    }
    const std::string_view digits = token.substr(point + 1);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit)) {
        return std::nullopt;
    }
    const bool roundsUp = digits.front() >= '5';
    if (roundsUp && *whole == std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return *whole + (roundsUp ? 1U : 0U);
}

}  // namespace NVORHOST
