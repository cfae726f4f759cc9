// KELSG_SPDData: the memory modules in the machine's sockets.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each populated memory device of the SMBIOS table, in its order, with what the module's
/// own EEPROM adds where the kernel shows it and its texts tell which module it is on.
void CollectMemoryModules(TCollection& collection);
std::span<const TClassShape> GetMemoryModuleClasses();
std::span<const TSourcePattern> GetMemoryModuleSources();

}  // namespace NVORHOST
