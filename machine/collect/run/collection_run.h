// Runs collectors and reports on each.
//
// Failure language: a property whose source cannot be read is not set. An exception from a collector is
// reported and not passed on, except for exhausted memory or descriptors (std::bad_alloc,
// TResourcesExhausted): it concerns this process, not the machine, and what was collected until then would be
// an incomplete inventory.
#pragma once

#include "machine/collect/frame/collect_context.h"
#include "machine/collect/run/collectors.h"
#include "text/value_source.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The outcome of one collector. Each list has a path once, in the order of first access. The failure of a
/// source that collectors share is reported for the collector that read it first.
struct TCollectReport {
    std::string_view collector;
    std::optional<std::string> failure;        ///< one line; absent if the collector did not throw
    std::vector<std::string> deniedSources;    ///< files and folders with permission denied
    std::vector<std::string> failedSources;    ///< unreadable for another reason
    std::vector<std::string> timedOutSources;  ///< no answer before the deadline
    std::vector<std::string> asleepSources;    ///< files of sleeping devices, which were not read
    /// The first essential source (essential_sources.h) that failed with an input error, and the cause:
    /// "/proc/cpuinfo: Input/output error"; absent if there is none.
    std::optional<std::string> essentialFailure;
    std::vector<std::string> notes;     ///< lines for the log: duplicate keys
    std::vector<std::string> warnings;  ///< lines for the log and the summary: malformed tables
    TValueCounts values{};              ///< properties by status, if the run wants sources
    std::size_t instances = 0;          ///< number of instances committed to its classes
    std::size_t replacedBytes = 0;      ///< bytes of device texts that were not valid UTF-8
    std::chrono::nanoseconds duration{};
};

/// A collection, run one collector at a time. A source that several collectors share is read once.
class TCollectorRuns {
  public:
    /// Declares the classes of `collectors` that the namespace lacks. `context` and everything that it refers
    /// to outlive this object.
    TCollectorRuns(const TCollectContext& context, std::span<const TCollector> collectors);
    ~TCollectorRuns();
    TCollectorRuns(const TCollectorRuns&) = delete;
    TCollectorRuns& operator=(const TCollectorRuns&) = delete;

    /// Runs one of the collectors. If it throws, the report has the failure, and the instances that it had
    /// committed stay.
    TCollectReport Run(const TCollector& collector);

  private:
    struct TParts;
    std::unique_ptr<TParts> parts_;
};

/// Declares the classes of `collectors` that the namespace lacks, for a namespace that is filled by other
/// means.
void DeclareClasses(TMemoryNamespace& target, std::span<const TCollector> collectors);

/// Runs the collectors in order with TCollectorRuns. One that throws does not stop the others.
std::vector<TCollectReport> CollectAll(const TCollectContext& context,
                                       std::span<const TCollector> collectors);

/// Runs every collector that is not opt-in.
std::vector<TCollectReport> CollectAll(const TCollectContext& context);

}  // namespace NVORHOST
