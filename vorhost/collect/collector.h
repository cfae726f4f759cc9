// The collectors: each reads one aspect of the machine through the system door and fills classes of a
// namespace.
#pragma once

#include "host/cim_date_time.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/system/system_calls.h"
#include "vorhost/system/system_files.h"

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// What collectors work with. All references outlive the collection.
struct TCollectContext {
    const ISystemFiles& files;
    const ISystemCalls& calls;
    TMemoryNamespace& target;
    /// The moment of the collection with the zone that local times are given in.
    TCIMDateTime localTime;
};

/// One row of the collector table.
struct TCollector {
    std::string_view name;         ///< as in listings and options, for example "processor"
    std::string_view description;  ///< one line for people
    void (*collect)(TCollectContext& context);
};

/// Every collector in the order in which they run and in which their classes enter the namespace.
std::span<const TCollector> GetCollectors();

/// How one collector fared.
struct TCollectReport {
    std::string_view collector;
    std::string failure;  ///< empty when it went well, else one line
    std::chrono::nanoseconds duration{};
};

/// Runs every collector. One that throws is reported and logged; the others run all the same, and what the
/// failed one had committed stays.
std::vector<TCollectReport> CollectAll(TCollectContext& context);

}  // namespace NVORHOST
