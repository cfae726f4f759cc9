// `vorhost snapshot`: saves the whole namespace.
#pragma once

#include "vorhost/cli/command_line.h"

namespace NVORHOST {

/// Throws TRunFailure.
void RunSnapshot(const TSnapshotOptions& options);

}  // namespace NVORHOST
