#include "machine/system/path_pattern.h"

#include <algorithm>

namespace NVORHOST {
namespace {

bool MatchesName(std::string_view pattern, std::string_view name) {
    const auto star = pattern.find('*');
    if (star == std::string_view::npos) {
        return pattern == name;
    }
    if (!name.starts_with(pattern.substr(0, star))) {
        return false;
    }
    const std::string_view rest = pattern.substr(star + 1);
    for (std::size_t skipped = star; skipped <= name.size(); ++skipped) {
        if (MatchesName(rest, name.substr(skipped))) {
            return true;
        }
    }
    return false;
}

// Removes the slash and the name at the start of `path` and returns the name.
std::string_view TakeName(std::string_view& path) {
    path.remove_prefix(1);
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(name.size());
    return name;
}

}  // namespace

bool MatchesPathPattern(std::string_view pattern, std::string_view path) {
    while (!pattern.empty()) {
        const std::string_view wanted = TakeName(pattern);
        if (wanted == "**") {
            for (; !path.empty(); (void)TakeName(path)) {
                if (MatchesPathPattern(pattern, path)) {
                    return true;
                }
            }
            return MatchesPathPattern(pattern, path);
        }
        if (path.empty() || !MatchesName(wanted, TakeName(path))) {
            return false;
        }
    }
    return path.empty();
}

}  // namespace NVORHOST
