// A collection that ends in time. Collectors run in a process of their own. When an access takes long,
// another process goes on without the path, beside the first one, which may still get its answer; at the
// deadline, each collector's best result counts, and what still waits is given up.
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
    std::vector<TCollectReport> reports;  ///< in the order of the collectors
    std::optional<NKELVOR20::TCIMDateTime> localTime;
};

/// Runs the chosen collectors and fills `target`. Errors: throws TRunFailure when the machine cannot be
/// opened, an essential source cannot be read, or memory, descriptors or processes are short.
TSupervisedCollection CollectSupervised(const TMachineOptions& options, TMemoryNamespace& target);

/// The same, but keeps what the collectors read instead of what they make of it.
TSupervisedCollection RecordSupervised(const TMachineOptions& options, TRecordedMachine& machine);

}  // namespace NVORHOST
