// KELSG_MAS: the addresses that the machine's memory arrays answer to.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each memory array mapped address of the SMBIOS table, in its order, joined with the
/// array.
void CollectMemoryArrayAddresses(TCollection& collection);
std::span<const TClassShape> GetMemoryArrayAddressClasses();
std::span<const TSourcePattern> GetMemoryArrayAddressSources();

}  // namespace NVORHOST
