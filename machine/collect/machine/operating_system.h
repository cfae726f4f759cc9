// KELSG_OperatingSystem: the system that runs, its memory and its clock.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance.
void CollectOperatingSystem(TCollection& collection);
std::span<const TClassShape> GetOperatingSystemClasses();
std::span<const TSourcePattern> GetOperatingSystemSources();

}  // namespace NVORHOST
