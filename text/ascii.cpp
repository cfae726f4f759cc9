#include "text/ascii.h"

#include <algorithm>

namespace NVORHOST {

std::string ToLowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), ToLower);
    return lower;
}

std::string ToUpperCase(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), ToUpper);
    return upper;
}

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, ToLower, ToLower);
}

}  // namespace NVORHOST
