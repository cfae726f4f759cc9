// Lists a directory that is open by descriptor.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// Names of all entries except "." and "..", in the order of the file system. Errors: nullopt, with errno.
std::optional<std::vector<std::string>> ListEntries(int directory);

}  // namespace NVORHOST
