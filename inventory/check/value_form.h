// The form of values of the XML Schema types in documents (XML Schema part 2, second edition).
#pragma once

#include <string_view>

namespace NINVENTORY {

/// True for the types that documents have.
bool IsKnownType(std::string_view type);

/// True if `text` is a value of the type; true for unknown types.
bool HasForm(std::string_view type, std::string_view text);

}  // namespace NINVENTORY
