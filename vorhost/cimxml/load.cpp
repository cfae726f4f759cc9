#include "vorhost/cimxml/load.h"

#include "os/module.h"
#include "vorhost/cimxml/loader_entry.h"

#include <stdexcept>

namespace NVORHOST {
namespace {

TLoaderEntry LoadEntry() {
    try {
        return LoadFunction<TLoaderEntry>(
            FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_CIMXML_LOADER), loaderEntryName);
    } catch (const std::runtime_error& error) {
        throw TDocumentError(std::string("the CIM-XML reader cannot be loaded: ") + error.what());
    }
}

TLoaderEntry GetEntry() {
    static const TLoaderEntry entry = LoadEntry();
    return entry;
}

}  // namespace

void LoadNamespace(const std::string& path, TMemoryNamespace& target) {
    GetEntry()(path, nullptr, target);
}

void LoadNamespace(const std::string& name, std::string_view text, TMemoryNamespace& target) {
    GetEntry()(name, &text, target);
}

}  // namespace NVORHOST
