#include "text/wildcard.h"

namespace NVORHOST {

bool MatchesWildcards(std::string_view pattern, std::string_view text) {
    const auto star = pattern.find('*');
    if (star == std::string_view::npos) {
        return pattern == text;
    }
    if (!text.starts_with(pattern.substr(0, star))) {
        return false;
    }
    const std::string_view rest = pattern.substr(star + 1);
    for (std::size_t skipped = star; skipped <= text.size(); ++skipped) {
        if (MatchesWildcards(rest, text.substr(skipped))) {
            return true;
        }
    }
    return false;
}

}  // namespace NVORHOST
