// Writes a machine of this folder to disk, for runs with --sysroot.
#pragma once

#include "tests/machine/system/machine_tree.h"

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {

/// Returns the names of the machines, sorted.
std::vector<std::string> ListMachines();

/// Reads the machine of that name from its tree.txt.
TMachine ReadMachine(const std::string& name);

/// The order in which entries are created, which often determines the order in which a directory lists them.
enum class EEntryOrder { forwards, backwards };

/// Writes the files of the machine to the new directory `folder`. Unreadable files get mode 000; answers of
/// system calls are in noxinfo-system.txt, as in a capture.
void WriteMachine(const TMachine& machine, const std::filesystem::path& folder, EEntryOrder order);

}  // namespace NVORHOST
