#include "text/numbers.h"

#include "text/ascii.h"

#include <algorithm>
#include <limits>

namespace NVORHOST {

std::optional<std::uint32_t> ParseRounded(std::string_view text) {
    const std::string_view token = TrimBlanks(text);
    const auto point = token.find('.');
    const auto whole = ParseNumber<std::uint32_t>(token.substr(0, point));
    if (!whole || point == std::string_view::npos) {
        return whole;
    }
    const std::string_view digits = token.substr(point + 1);
    if (digits.empty() || !std::ranges::all_of(digits, IsDigit)) {
        return std::nullopt;
    }
    const bool roundsUp = digits.front() >= '5';
    if (roundsUp && *whole == std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return *whole + (roundsUp ? 1U : 0U);
}

}  // namespace NVORHOST
