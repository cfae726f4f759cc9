// KELSG_PCIDevice and KELSG_PCIBridge: the functions on the machine's PCI buses.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each function in the order of their addresses: KELSG_PCIDevice for header type 0,
/// KELSG_PCIBridge for types 1 and 2. A function whose registers cannot be read is sorted by its class.
void CollectPciFunctions(TCollection& collection);
std::span<const TClassShape> GetPciFunctionClasses();
std::span<const TSourcePattern> GetPciFunctionSources();

}  // namespace NVORHOST
