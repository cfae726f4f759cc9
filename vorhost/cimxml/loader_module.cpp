// The entry point of the reader's module, which is linked to the XML library.
#include "host/export.h"
#include "vorhost/cimxml/loader_entry.h"
#include "vorhost/cimxml/parse.h"

extern "C" NKELVOR20_API void NVORHOST_LoadCimXml(const std::string& name, const std::string_view* text,
                                                  NVORHOST::TMemoryNamespace& target) {
    if (text == nullptr) {
        NVORHOST::LoadNamespaceFromFile(name, target);
    } else {
        NVORHOST::LoadNamespaceFromText(name, *text, target);
    }
}

static_assert(std::is_same_v<decltype(&NVORHOST_LoadCimXml), NVORHOST::TLoaderEntry>);
