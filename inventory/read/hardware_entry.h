// The function that the module of the hardware reader exports.
#pragma once

#include "inventory/read/document_events.h"
#include "inventory/read/document_input.h"

namespace NINVENTORY {

/// The type of the exported symbol `hardwareEntryName`, which calls ReadHardwareDocument.
using THardwareEntry = void (*)(TDocumentInput& input, IDocumentEvents& events);

constexpr char hardwareEntryName[] = "NINVENTORY_ReadHardware";

}  // namespace NINVENTORY
