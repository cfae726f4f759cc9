// The operating system's name as its distribution spells it, for hosts whose namespace does not hold one.
#pragma once

#include "host/export.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The value of PRETTY_NAME in the text of an os-release file, quotes and escapes resolved. A bare value may
/// contain blanks; after a quoted part a blank ends the value.
/// Absent: nullopt when no line assigns it a text.
/// Source: os-release(5); the last assignment counts, as in the shell.
NKELVOR20_API std::optional<std::string> ParsePrettyName(std::string_view osRelease);

}  // namespace NVORHOST
