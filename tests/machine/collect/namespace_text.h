// A namespace as text that can be compared and reviewed.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <string>

namespace NVORHOST {

/// One line "Class[i].Property = type value" for each property that is set, in the order of classes,
/// instances and first setting.
std::string ToText(const TMemoryNamespace& source);

}  // namespace NVORHOST
