// Moments as CIM date-times.
#pragma once

#include "host/cim_date_time.h"

#include <cstdint>

namespace NVORHOST {

/// The moment, in seconds since 1970-01-01 UTC, as the clock read it where local time was `offsetMinutes`
/// east of UTC. Shape: no microseconds. Years outside 0 to 9999 do not occur in what Linux tells.
NKELVOR20::TCIMDateTime MakeCimTime(std::int64_t secondsSinceEpoch, int offsetMinutes);

}  // namespace NVORHOST
