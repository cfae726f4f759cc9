// KELSG_SystemSlot: the machine's expansion slots, empty ones too.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each slot of the SMBIOS table, in its order; what is in a PCI slot and how its latch
/// stands comes from the kernel.
void CollectSystemSlots(TCollection& collection);
std::span<const TClassShape> GetSystemSlotClasses();
std::span<const TSourcePattern> GetSystemSlotSources();

}  // namespace NVORHOST
