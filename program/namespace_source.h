// Where a run's namespace comes from: this machine, a captured tree, or a file.
#pragma once

#include "machine/supervision/recorded_machine.h"
#include "machine/supervision/source_gaps.h"
#include "program/command_line.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <optional>
#include <string>

namespace NVORHOST {

/// A filled namespace and what became of filling it.
struct TNamespaceSource {
    boost::shared_ptr<TMemoryNamespace> collected;
    std::string origin;  ///< for people: "this machine", "tree /x", "file y.xml"
    TSourceGaps gaps;
    std::size_t replacedBytes = 0;  ///< of the machine's texts, because they are no characters
    /// The moment of the collection; absent for a file, and for a tree that does not tell.
    std::optional<NKELVOR20::TCIMDateTime> localTime;
};

/// Fills a namespace as the options say and logs what goes wrong. Throws TRunFailure when a file cannot be
/// read, a tree is not there, or a machine cannot be collected from.
TNamespaceSource ObtainNamespace(const TSourceOptions& options);

/// Runs the collectors as well, but fills `machine` with what they read; `collected` stays null.
TNamespaceSource RecordMachine(const TSourceOptions& options, TRecordedMachine& machine);

}  // namespace NVORHOST
