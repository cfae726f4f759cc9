// KELSG_Processor: the processors in the machine's sockets.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each populated socket of the SMBIOS table, joined in order with the kernel's packages
/// when there are as many of one as of the other; without such a table one for each package. Sockets that are
/// not joined have the name of the machine's processors where all are of one model.
void CollectProcessors(TCollection& collection);
std::span<const TClassShape> GetProcessorClasses();
std::span<const TSourcePattern> GetProcessorSources();

}  // namespace NVORHOST
