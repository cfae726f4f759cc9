#include "inventory/read/document_reader.h"

#include "documents/document_error.h"
#include "inventory/read/hardware_entry.h"
#include "inventory/read/system_information_reader.h"
#include "os/module.h"

#include <optional>
#include <stdexcept>

namespace NINVENTORY {
namespace {

using NVORHOST::TDocumentCause;
using NVORHOST::TDocumentError;
using NVORHOST::ThrowAt;

THardwareEntry LoadEntry() {
    try {
        return NVORHOST::LoadFunction<THardwareEntry>(
            NVORHOST::FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_HARDWARE_MODULE),
            hardwareEntryName);
    } catch (const std::runtime_error& error) {
        throw TDocumentError(std::string("the reader of documents cannot be loaded: ") + error.what());
    }
}

void ReadHardware(TDocumentInput& input, IDocumentEvents& events) {
    static const THardwareEntry entry = LoadEntry();
    entry(input, events);
}

void ReadSystemInformation(TDocumentInput& input, IDocumentEvents& events) {
    const std::string text = input.ReadAll(maxSystemInformationBytes);
    TSystemInformationReader reader(text);
    try {
        reader.Read(events);
    } catch (const TDocumentCause& cause) {
        ThrowAt({input.GetName(), reader.GetLine(), {}, {}}, cause.what());
    }
}

}  // namespace

void ReadDocument(TDocumentInput& input, IDocumentEvents& events) {
    switch (input.GetContent()) {
        case EContent::hardware:
            return ReadHardware(input, events);
        case EContent::systemInformation:
            return ReadSystemInformation(input, events);
        case EContent::cimXml:
        case EContent::unknown:
            ThrowAt({input.GetName(), {}, {}, {}}, "is not an inventory document");
    }
}

}  // namespace NINVENTORY
