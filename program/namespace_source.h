// The source of the namespace of a run: the machine, a captured tree, or a file.
#pragma once

#include "machine/supervision/collect_outcome.h"
#include "machine/supervision/recorded_machine.h"
#include "program/command_line.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

#include <optional>
#include <string>

namespace NVORHOST {

/// A filled namespace, its origin and the outcome of filling it.
struct TNamespaceSource {
    boost::shared_ptr<TMemoryNamespace> collected;  ///< null after RecordMachine
    std::string origin;                             ///< for people: "this machine", "tree /x", "file y.xml"
    TCollectOutcome outcome;
    /// Time of the collection; absent for a file and for a tree without a recorded time.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
};

/// Loads a namespace file or collects from the machine, as the options require. Logs a warning for each gap.
/// Errors: throws TRunFailure if the file cannot be loaded or the machine cannot be opened.
TNamespaceSource ObtainNamespace(const TSourceOptions& options);

/// Runs the collectors and fills `machine` with what they read.
/// Errors: throws TRunFailure if the machine cannot be opened.
TNamespaceSource RecordMachine(const TSourceOptions& options, TRecordedMachine& machine);

}  // namespace NVORHOST
