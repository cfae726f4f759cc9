// A machine of a test's own making as a tree of files, for programs to be pointed at.
#pragma once

#include "tests/machine/system/machine_tree.h"

#include <string>

namespace NTEST {

/// Writes what the machine holds below `folder`, and beside it what its system calls answer.
void WriteMachine(const NVORHOST::TMachine& machine, const std::string& folder);

}  // namespace NTEST
