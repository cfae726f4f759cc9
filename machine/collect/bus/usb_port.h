// KELSG_USBPort: the ports of the machine's hubs.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each port of each hub, root hubs and empty ports included.
void CollectUsbPorts(TCollection& collection);
std::span<const TClassShape> GetUsbPortClasses();
std::span<const TSourcePattern> GetUsbPortSources();

}  // namespace NVORHOST
