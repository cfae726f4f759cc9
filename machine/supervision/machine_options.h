// The options of a collection: which machine, which collectors, how long.
#pragma once

#include "host/cim_date_time.h"
#include "machine/collect/run/collectors.h"

#include <chrono>
#include <optional>
#include <span>
#include <string>

namespace NVORHOST {

struct TMachineOptions {
    std::string sysroot = "/";
    /// Replaces the clock; absent: the clock, or the time of the capture.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
    TCollectorChoice collectors;
    /// Collectors that run after the chosen ones. They outlive the collection.
    std::span<const TCollector> extraCollectors;
    /// Time limit of the collection; absent: none.
    std::optional<std::chrono::milliseconds> deadline = std::chrono::seconds(10);
    bool wakes = false;  ///< read the files of sleeping devices too, which wakes them
    /// Keep where each property comes from, or why it has no value.
    bool withSources = false;
    /// Count the properties by the status of their values.
    bool countsValues = false;
};

}  // namespace NVORHOST
