// Places that the firmware names: sockets, slots, boards. Several may bear one name.
#pragma once

#include "machine/collect/frame/device_key.h"

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TNamedPlace {
    std::string name;    ///< empty: it has none
    std::string partOf;  ///< what it is in, such as the bank of a socket; empty when that is not told
};

/// What the key of each place is made from, in order: its name; and as position what it is in, where that
/// tells it from the places of the same name, else `word` and its number among all, from 1: "slot 3".
std::vector<TKeySource> MakePlaceKeySources(const std::vector<TNamedPlace>& places, std::string_view word);

}  // namespace NVORHOST
