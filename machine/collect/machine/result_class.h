// KELSG_CADAT: the class whose instances the plug-in makes. The host offers it empty.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// Commits nothing: the class is declared with the others, and that is all a plug-in needs.
void CollectResultClass(TCollection& collection);
std::span<const TClassShape> GetResultClasses();
std::span<const TSourcePattern> GetResultSources();

}  // namespace NVORHOST
