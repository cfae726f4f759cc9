// The os-release file, by which a distribution names itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Returns the value of the variable `name` in `text`, with quotes and escapes resolved as a shell does.
/// Shape:  one assignment per line, blanks around it ignored. An unquoted value may contain blanks; after a
///         quoted part, a blank ends the value.
/// Absent: nullopt if no line assigns the variable or if its value is empty. The last assignment wins. Lines
///         whose quotes do not close are skipped.
/// Source: os-release(5).
std::optional<std::string> FindOsReleaseValue(std::string_view text, std::string_view name);

}  // namespace NVORHOST
