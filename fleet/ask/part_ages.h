// How long parts have been seen. Inventories do not have the age of a part, but a fleet remembers when it saw
// a part first.
#pragma once

#include "fleet/store/fleet_store.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// The parts whose age is within a span.
struct TAgeCount {
    std::string_view span;  ///< "30 to 90 days"
    std::uint64_t parts = 0;

    bool operator==(const TAgeCount&) const = default;
};

/// Counts the parts of a type that the machines have at present, by the time from their first inventory in
/// any machine to the newest inventory of the machine that they are in; ascending, without spans that have no
/// parts. A part is recognised in another machine by its name with a serial number, or without one with an
/// identifier that is its own, unless it was in the first inventory of its present machine.
std::vector<TAgeCount> CountAges(IFleetStore& store, const std::vector<TMachine>& machines,
                                 const std::string& type);

}  // namespace NFLEET
