#include "commandline/nearest_word.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace NVORHOST {
namespace {

// Computes the optimal string alignment distance by dynamic programming.
std::size_t Distance(std::string_view one, std::string_view other) {
    std::vector<std::vector<std::size_t>> table(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i) {
        for (std::size_t j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                table[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = table[i - 1][j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
            table[i][j] = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
            }
        }
    }
    return table[one.size()][other.size()];
}

// Strips the leading dashes of an option.
std::string_view Letters(std::string_view word) {
    const auto first = word.find_first_not_of('-');
    return first == std::string_view::npos ? std::string_view() : word.substr(first);
}

}  // namespace

std::optional<std::string> FindNearest(std::string_view word, std::span<const std::string> known) {
    constexpr std::size_t longest = 64;  // bounds the table, whose size is quadratic
    const std::string_view letters = Letters(word);
    if (letters.empty() || letters.size() > longest) {
        return std::nullopt;
    }
    std::optional<std::string> nearest;
    std::size_t least = std::max<std::size_t>(letters.size() / 3, 1) + 1;  // exclusive upper limit
    for (const std::string& each : known) {
        const bool isBeginning = letters.size() > 1 && Letters(each).starts_with(letters);
        const std::size_t distance = isBeginning ? 1 : Distance(letters, Letters(each));
        if (distance < least && distance < letters.size()) {
            least = distance;
            nearest = each;
        }
    }
    return nearest;
}

std::string DidYouMean(std::string_view word, std::span<const std::string> known) {
    const auto nearest = FindNearest(word, known);
    return nearest ? ": did you mean " + *nearest + "?" : "";
}

}  // namespace NVORHOST
