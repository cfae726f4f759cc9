// KELSG_ACPI: the ranges of the firmware's memory map.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each range of /sys/firmware/memmap, in the order of addresses; without that folder one
/// for each range of /proc/iomem that comes from the firmware's map. Addresses that the kernel hides from the
/// user give no instance.
void CollectMemoryMap(TCollection& collection);
std::span<const TClassShape> GetMemoryMapClasses();
std::span<const TSourcePattern> GetMemoryMapSources();

}  // namespace NVORHOST
