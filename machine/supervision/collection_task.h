// The work of a collecting process, and the messages that it sends.
#pragma once

#include "machine/supervision/machine_options.h"
#include "machine/system/watched_files.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace NVORHOST {

enum class ECollects {
    instances,  ///< instances for a namespace
    logs,       ///< what the collectors read, for a capture
};

struct TCollectionTask {
    TMachineOptions options;
    ECollects collects = ECollects::instances;
    std::vector<TCollector> collectors;
    std::size_t first = 0;        ///< index of the first collector to run
    TUnansweredPaths unanswered;  ///< paths that must not be tried again
    /// Time of the collection, if an earlier process has determined it.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
};

/// Kinds of messages of a collecting process. It sends one `opened`, a `result` for each collector in order,
/// and one `done`; or `failed` at any point, as its last message.
enum class ECollectionMessage : unsigned char {
    opened,  ///< the time of the collection as text; empty if unknown
    result,  ///< index of the collector, report (collector_message.h), then instances or a log
             ///< (recorded_machine.h)
    failed,  ///< one line for people
    done,    ///< no content
};

}  // namespace NVORHOST
