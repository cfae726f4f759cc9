// KELSG_OperatingSystem: the system that runs, its memory and its clock.
#pragma once

#include "vorhost/collect/class_shape.h"
#include "vorhost/collect/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance.
void CollectOperatingSystem(TCollection& collection);
std::span<const TClassShape> GetOperatingSystemClasses();
std::span<const TSourcePattern> GetOperatingSystemSources();

}  // namespace NVORHOST
