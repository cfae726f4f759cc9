// The entry point of the module, which is linked to the XML library.
#include "inventory/read/hardware_entry.h"
#include "inventory/read/hardware_reader.h"

#include <type_traits>

extern "C" __attribute__((visibility("default"))) void NINVENTORY_ReadHardware(
    NINVENTORY::TDocumentInput& input, NINVENTORY::IDocumentEvents& events) {
    NINVENTORY::ReadHardwareDocument(input, events);
}

static_assert(std::is_same_v<decltype(&NINVENTORY_ReadHardware), NINVENTORY::THardwareEntry>);
