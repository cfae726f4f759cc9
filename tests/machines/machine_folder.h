// A machine of this folder on the disk, where the program can be pointed at it.
#pragma once

#include "tests/machine/system/machine_tree.h"

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {

/// The names of the machines, sorted.
std::vector<std::string> ListMachines();

/// The machine of that name, from its tree.txt.
TMachine ReadMachine(const std::string& name);

/// In which order entries are made: what a folder lists first often follows from it.
enum class EEntryOrder { forwards, backwards };

/// Writes the machine's files below `folder`, which is made. Files that refuse to be read have no
/// permissions; answers of system calls stand beside them as in a capture.
void WriteMachine(const TMachine& machine, const std::filesystem::path& folder, EEntryOrder order);

}  // namespace NVORHOST
