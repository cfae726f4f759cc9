// The command `noxinfo snapshot`, which saves the whole namespace.
#pragma once

#include "program/command_line.h"

#include <iosfwd>

namespace NVORHOST {

/// Saves the namespace. Prints the outcome of the collection to `out`, or to standard error if the snapshot
/// goes to standard output.
/// Errors: throws TRunFailure.
EExitStatus RunSnapshot(const TSnapshotOptions& options, std::ostream& out);

}  // namespace NVORHOST
