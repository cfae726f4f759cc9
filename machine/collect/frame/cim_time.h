// Converts times to CIM date-times.
#pragma once

#include "host/cim_date_time.h"

#include <cstdint>

namespace NVORHOST {

/// Converts seconds since 1970-01-01 UTC to the local time of a zone that is `offsetMinutes` east of UTC,
/// without microseconds. The year of the result must be between 0 and 9999.
NKELVOR20::TCIMDateTime MakeCimTime(std::int64_t secondsSinceEpoch, int offsetMinutes);

}  // namespace NVORHOST
