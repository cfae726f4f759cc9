// KELSG_Process: what runs on the machine. No document carries it, and it is different at every look, so it
// is collected only when asked for.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each process, in the order of the process numbers. One that ends while it is read is
/// left out.
void CollectProcesses(TCollection& collection);
std::span<const TClassShape> GetProcessClasses();
std::span<const TSourcePattern> GetProcessSources();

}  // namespace NVORHOST
