// A collection that ends before its deadline. Collectors run in a separate process. When an access takes
// long, another process continues without that path, while the first one may still get its answer. At the
// deadline the best result of each collector counts, and the processes that still wait are killed.
//
//   process 1   a  b  c...............................waits for /sys/x          killed at the deadline
//   process 2            c  d  e........waits for /sys/y; /sys/x is refused     killed at the deadline
//   process 3                     e  f  g     /sys/x and /sys/y are refused     done
//   counts      a1 b1    c2 d2    e3 f3 g3
#pragma once

#include "machine/collect/run/collection_run.h"
#include "machine/supervision/machine_options.h"
#include "machine/supervision/recorded_machine.h"
#include "vorhost/model/memory_namespace.h"

#include <optional>
#include <vector>

namespace NVORHOST {

struct TSupervisedCollection {
    std::vector<TCollectReport> reports;               ///< in the order of the collectors
    std::optional<NKELVOR20::TCIMDateTime> localTime;  ///< time of the collection; absent if unknown
};

/// Runs the chosen collectors and fills `target`.
/// Errors: throws TRunFailure if the machine cannot be opened, an essential source cannot be read, or memory,
///         descriptors or processes run out.
TSupervisedCollection CollectSupervised(const TMachineOptions& options, TMemoryNamespace& target);

/// Runs the chosen collectors and keeps what they read instead of their instances.
/// Errors: see CollectSupervised.
TSupervisedCollection RecordSupervised(const TMachineOptions& options, TRecordedMachine& machine);

}  // namespace NVORHOST
