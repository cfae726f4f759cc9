#include "machine/system/path_pattern.h"

#include "text/wildcard.h"

namespace NVORHOST {
namespace {

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
        if (path.empty() || !MatchesWildcards(wanted, TakeName(path))) {
            return false;
        }
    }
    return path.empty();
}

}  // namespace NVORHOST
