// Writes a machine of a test as a tree of files, from which programs can collect.
#pragma once

#include "tests/machine/system/machine_tree.h"

#include <string>

namespace NTEST {

/// Writes the files of the machine below `folder`, and the results of its system calls beside them.
void WriteMachine(const NVORHOST::TMachine& machine, const std::string& folder);

}  // namespace NTEST
