// KELSG_DataSource: the program that collected.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance, whose Version is this project's.
void CollectDataSource(TCollection& collection);
std::span<const TClassShape> GetDataSourceClasses();
std::span<const TSourcePattern> GetDataSourceSources();

}  // namespace NVORHOST
