// Process-wide settings of the host's services. The services of host/ are static operations, so the settings
// cannot be members of an object that plug-ins would receive.
#pragma once

#include "host/cim_date_time.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <boost/shared_ptr.hpp>

#include <optional>
#include <string>

namespace NVORHOST {

/// The environment variable from which a plug-in reads the customer identity.
inline constexpr char identityVariable[] = "ZETKELID";

/// The answer of `TOSSpecific::DetectHostnameAvailable`.
enum class EReachability {
    network,  ///< the result of a connection attempt
    yes,      ///< reachable; no connection is attempted
    no,       ///< unreachable; no connection is attempted
};

struct THostSettings {
    /// Answered by `TOSSpecific::GetLocalTime` instead of the clock.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
    EReachability reachability = EReachability::network;
    /// `TOSSpecific` takes machine and operating-system name from its first `KELSG_OperatingSystem`; null:
    /// from the running system.
    boost::shared_ptr<NKELVOR20::ICIMNamespace> collected;
    /// Answered by `TOSSpecific::GetEnvironment` for `identityVariable`; absent: the process environment.
    std::optional<std::string> identity;
};

/// Replaces the settings and forgets earlier results of reachability checks.
NKELVOR20_API void SetHostSettings(THostSettings settings);
NKELVOR20_API const THostSettings& GetHostSettings();

/// True if the most recent `TOSSpecific::DetectHostnameAvailable` since SetHostSettings answered unreachable.
NKELVOR20_API bool WasHostUnreachable();
void SetReachable(bool isReachable);

}  // namespace NVORHOST
