// What one run of the embedded host wants its static services to answer. The services of host/ are static
// operations, so the choice has to live in one object of the process; this is it.
#pragma once

#include "host/cim_date_time.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <boost/shared_ptr.hpp>

#include <optional>

namespace NVORHOST {

/// What `TOSSpecific::DetectHostnameAvailable` answers.
enum class EReachability {
    network,  ///< the result of a real connection attempt
    yes,      ///< reachable, without touching the network
    no,       ///< not reachable, without touching the network
};

struct THostSettings {
    /// Answered by `TOSSpecific::GetLocalTime` instead of the clock.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
    EReachability reachability = EReachability::network;
    /// Whose first `KELSG_OperatingSystem` answers machine and operating-system name; may be null.
    boost::shared_ptr<NKELVOR20::ICIMNamespace> collected;
};

/// Sets what the services answer from here on.
NKELVOR20_API void SetHostSettings(THostSettings settings);
NKELVOR20_API const THostSettings& GetHostSettings();

/// True when `TOSSpecific::DetectHostnameAvailable` has last found a host unreachable, since settings were
/// set.
NKELVOR20_API bool WasHostUnreachable();
void NoteReachability(bool isReachable);

}  // namespace NVORHOST
