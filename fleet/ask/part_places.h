// The question where a part is, and where it was.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"

#include <string_view>

namespace NFLEET {

/// Returns every machine and place that a part with this serial number, address or other identifying value
/// has been in, by time. A note names each pair of machines that have had it at the same time.
TAnswer FindPart(IFleetStore& store, std::string_view identity);

}  // namespace NFLEET
