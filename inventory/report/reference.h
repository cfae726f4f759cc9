// References between resources: object paths with one key.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NINVENTORY {

struct TReference {
    std::string className;
    std::string property;
    std::string value;
};

/// Parses `Class.Key="value"`, where quotes and backslashes of the value follow a backslash. Returns nullopt
/// for any other path, such as one with several keys.
std::optional<TReference> ParseReference(std::string_view text);

}  // namespace NINVENTORY
