// Places with names that the firmware gives, possibly several with the same name: sockets, slots, boards.
#pragma once

#include "machine/collect/frame/device_key.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TNamedPlace {
    std::optional<std::string> name;
    std::optional<std::string> partOf;  ///< the containing unit, such as the bank of a socket
};

/// Returns the key source of each place, in order. Identity: its name. Position: `partOf` if it is unique
/// among the places of the same name, else `word` and the 1-based number of the place among all: "slot 3".
std::vector<TKeySource> MakePlaceKeySources(const std::vector<TNamedPlace>& places, std::string_view word);

}  // namespace NVORHOST
