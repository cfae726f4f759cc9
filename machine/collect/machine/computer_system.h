// KELSG_ComputerSystem: what machine this is.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance. Its ProductName, from which the machine type comes, is always set: it is the firmware's, or
/// the device tree's, or names the hypervisor, or at last the processor.
void CollectComputerSystem(TCollection& collection);
std::span<const TClassShape> GetComputerSystemClasses();
std::span<const TSourcePattern> GetComputerSystemSources();

}  // namespace NVORHOST
