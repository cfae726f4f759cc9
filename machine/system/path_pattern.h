// Families of paths, as people write them.
#pragma once

#include <string_view>

namespace NVORHOST {

/// True when `path` is one that `pattern` stands for: in it, "*" stands for any part of one name, also an
/// empty one, and a name "**" for any number of names, also none.
bool MatchesPathPattern(std::string_view pattern, std::string_view path);

}  // namespace NVORHOST
