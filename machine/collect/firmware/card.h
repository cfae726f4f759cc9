// KELSG_Card: the machine's boards.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each baseboard of the SMBIOS table; without one the board of the kernel's excerpt, which
/// every user may read.
void CollectCards(TCollection& collection);
std::span<const TClassShape> GetCardClasses();
std::span<const TSourcePattern> GetCardSources();

}  // namespace NVORHOST
