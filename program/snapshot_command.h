// `noxinfo snapshot`: saves the whole namespace.
#pragma once

#include "program/command_line.h"

#include <iosfwd>

namespace NVORHOST {

/// Prints the sources that could not be read to `out`, or to standard error when the snapshot goes to
/// standard output. Throws TRunFailure.
EExitStatus RunSnapshot(const TSnapshotOptions& options, std::ostream& out);

}  // namespace NVORHOST
