// Everything that a collection needs from outside: the machine, the namespace to fill, the time, device
// names.
#pragma once

#include "host/cim_date_time.h"
#include "machine/collect/frame/device_names.h"
#include "machine/system/system_calls.h"
#include "machine/system/system_files.h"
#include "machine/system/watched_files.h"
#include "vorhost/model/memory_namespace.h"

#include <optional>

namespace NVORHOST {

/// Non-owning: the referenced objects outlive the collection.
struct TCollectContext {
    const ISystemFiles& files;
    const ISystemCalls& calls;
    TMemoryNamespace& target;
    /// Time of the collection, with the zone for local times; absent if unknown, as on a captured tree.
    std::optional<TCIMDateTime> localTime;
    /// Source of device names. If it is null, devices are named by their class and numbers.
    const IDeviceNames* deviceNames = nullptr;
    /// True if files may be read that wake a device.
    bool wakes = false;
    /// True if the search for the value of every property is looked at, so that its status is known.
    bool withSources = false;
    /// With sources: true if every instance keeps them, false if only the statuses are counted.
    bool keepsSources = true;
    /// Paths whose accesses end as timed out; null if there are none.
    const TUnansweredPaths* unanswered = nullptr;
};

}  // namespace NVORHOST
