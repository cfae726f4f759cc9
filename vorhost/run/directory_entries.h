// Lists a directory by descriptor.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// Names of all entries but "." and "..", in the file system's order. Absent, with errno, when the directory
/// cannot be listed.
std::optional<std::vector<std::string>> ListEntries(int directory);

}  // namespace NVORHOST
