// The reader as a module: what brings the XML library into the process, and only when a document is read.
#include "host/export.h"
#include "vorhost/cimxml/loader_entry.h"
#include "vorhost/cimxml/parse.h"

extern "C" NKELVOR20_API void NVORHOST_LoadCimXmlFile(const std::string& path,
                                                      NVORHOST::TMemoryNamespace& target) {
    NVORHOST::LoadNamespaceFromFile(path, target);
}

static_assert(std::is_same_v<decltype(&NVORHOST_LoadCimXmlFile), NVORHOST::TLoaderEntry>);
