// The collectors: each reads one aspect of the machine through the system door and fills classes of a
// namespace.
//
// Failure language: what cannot be read is a property that is not set. What a collector throws is reported
// here, not passed on, but for a lack of memory or descriptors (std::bad_alloc, TResourcesExhausted): that
// says nothing about the machine, and what was collected so far is no inventory of it.
#pragma once

#include "host/cim_date_time.h"
#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/device_names.h"
#include "machine/collect/frame/source_patterns.h"
#include "machine/system/system_calls.h"
#include "machine/system/system_files.h"
#include "vorhost/model/memory_namespace.h"

#include <chrono>
#include <cstddef>
#include <memory>
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
    std::string failure;                       ///< empty when it went well, else one line
    std::vector<std::string> deniedSources;    ///< files and folders that are not for this user
    std::vector<std::string> failedSources;    ///< those that could not be read for another reason
    std::vector<std::string> timedOutSources;  ///< those that did not answer in time
    /// The first essential source (essential_sources.h) that could not be read for an input error, and the
    /// cause, "/proc/cpuinfo: Input/output error"; empty when there is none.
    std::string essentialFailure;
    std::vector<std::string> notes;     ///< lines for the log: keys that collided
    std::vector<std::string> warnings;  ///< lines for the log and the summary: malformed tables
    std::size_t instances = 0;          ///< committed to the classes it fills
    std::size_t replacedBytes = 0;      ///< bytes of the machine's texts that are no characters
    std::chrono::nanoseconds duration{};
};

/// A collection, one collector at a time. Sources that several of them share are read once.
class TCollectorRuns {
  public:
    /// Declares the classes of these collectors that are not in the namespace yet. `context` and what it
    /// refers to outlive this object.
    TCollectorRuns(const TCollectContext& context, std::span<const TCollector> collectors);
    ~TCollectorRuns();
    TCollectorRuns(const TCollectorRuns&) = delete;
    TCollectorRuns& operator=(const TCollectorRuns&) = delete;

    /// Runs one of the collectors. One that throws is reported, and what it had committed stays.
    TCollectReport Run(const TCollector& collector);

  private:
    struct TParts;
    std::unique_ptr<TParts> parts_;
};

/// Declares the classes of the collectors, as TCollectorRuns does, for a namespace that is filled otherwise.
void DeclareClasses(TMemoryNamespace& target, std::span<const TCollector> collectors);

/// Declares the classes of every collector that are not in the namespace yet, then runs the collectors in
/// order. One that throws is reported; the others run all the same, and what the failed one had committed
/// stays.
std::vector<TCollectReport> CollectAll(const TCollectContext& context,
                                       std::span<const TCollector> collectors);

/// The same with every collector that need not be asked for.
std::vector<TCollectReport> CollectAll(const TCollectContext& context);

}  // namespace NVORHOST
