// The collectors: each reads one aspect of the machine through the system door and fills classes of a
// namespace.
//
// Failure language: what cannot be read is a property that is not set. A collector throws only when the
// namespace or the memory does, and that is reported here, not passed on.
#pragma once

#include "host/cim_date_time.h"
#include "vorhost/collect/class_shape.h"
#include "vorhost/collect/device_names.h"
#include "vorhost/collect/source_patterns.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/system/system_calls.h"
#include "vorhost/system/system_files.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

class TCollection;

/// What a collection works with. All that is referred to outlives the collection.
struct TCollectContext {
    const ISystemFiles& files;
    const ISystemCalls& calls;
    TMemoryNamespace& target;
    /// The moment of the collection with the zone that local times are given in; absent when it is unknown,
    /// as on a captured tree.
    std::optional<TCIMDateTime> localTime;
    /// Null: devices are named by their class and numbers.
    const IDeviceNames* deviceNames = nullptr;
};

/// One row of the collector table.
struct TCollector {
    std::string_view name;               ///< as in listings and options, for example "processor"
    std::string_view description;        ///< one line for people
    std::span<const TClassShape> fills;  ///< the classes whose instances it commits; declared before it runs
    std::span<const TSourcePattern> reads;  ///< every path that it may look at
    void (*collect)(TCollection& collection);
    bool onlyWhenAskedFor = false;  ///< not part of a collection that names no collectors
};

/// Every collector in the order in which they run and in which their classes enter the namespace.
std::span<const TCollector> GetCollectors();

/// Which collectors run, by name. Names that no collector has choose none.
struct TCollectorChoice {
    std::vector<std::string> only;  ///< empty: every one that need not be asked for
    std::vector<std::string> skip;  ///< counts more than `only`
    bool withProcesses = false;     ///< the processes too
};

/// The chosen ones in the order of GetCollectors. One that is to be asked for runs when `only` names it, too.
std::vector<TCollector> ChooseCollectors(const TCollectorChoice& choice);

/// How one collector fared. Paths are in the order of the first access, each one once; what an earlier
/// collector of the same run read for all of them is reported with that one.
struct TCollectReport {
    std::string_view collector;
    std::string failure;                     ///< empty when it went well, else one line
    std::vector<std::string> deniedSources;  ///< files and folders that are not for this user
    std::vector<std::string> failedSources;  ///< those that could not be read for another reason
    std::vector<std::string> notes;          ///< lines for the log: keys that collided
    std::vector<std::string> warnings;       ///< lines for the log and the summary: malformed tables
    std::size_t instances = 0;               ///< committed to the classes it fills
    std::size_t replacedBytes = 0;           ///< bytes of the machine's texts that are no characters
    std::chrono::nanoseconds duration{};
};

/// Declares the classes of every collector that are not in the namespace yet, then runs the collectors in
/// order. One that throws is reported; the others run all the same, and what the failed one had committed
/// stays.
std::vector<TCollectReport> CollectAll(const TCollectContext& context,
                                       std::span<const TCollector> collectors);

/// The same with every collector that need not be asked for.
std::vector<TCollectReport> CollectAll(const TCollectContext& context);

}  // namespace NVORHOST
