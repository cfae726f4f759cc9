// Patterns of paths.
#pragma once

#include <string_view>

namespace NVORHOST {

/// True if `path` matches `pattern`, in which "*" matches any part of one name, including the empty part, and
/// a name "**" matches any number of names, including none.
bool MatchesPathPattern(std::string_view pattern, std::string_view path);

}  // namespace NVORHOST
