// KELSG_VideoController, KELSG_USBController and KELSG_IDEProtocolController: controllers by their kind, most
// of them PCI functions, which are listed as such as well.
#pragma once

#include "machine/collect/frame/class_shape.h"
#include "machine/collect/frame/source_patterns.h"

#include <span>

namespace NVORHOST {

class TCollection;

/// One instance for each controller of the three kinds: PCI functions by their class, in the order of their
/// addresses, then display and USB controllers on other buses.
void CollectControllers(TCollection& collection);
std::span<const TClassShape> GetControllerClasses();
std::span<const TSourcePattern> GetControllerSources();

}  // namespace NVORHOST
