// A namespace that loads can be saved, and loads again as an equal namespace.
#include "equal_namespaces.h"
#include "fuzz.h"
#include "vorhost/cimxml/parse.h"
#include "vorhost/cimxml/save.h"

#include <sstream>

namespace {

std::string Save(const NVORHOST::TMemoryNamespace& source) {
    std::ostringstream out;
    NVORHOST::SaveNamespace(source, out);
    return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    NVORHOST::TMemoryNamespace loaded;
    try {
        NVORHOST::LoadNamespaceFromText("input", AsText(data, size), loaded);
    } catch (const NVORHOST::TDocumentError&) {
        Require(loaded.GetClasses().empty(), "a refused document leaves the namespace as it was");
        return 0;
    }
    const std::string once = Save(loaded);
    NVORHOST::TMemoryNamespace again;
    NVORHOST::LoadNamespaceFromText("saved", once, again);
    Require(NVORHOST::NTEST::AreEqual(loaded, again), "what was saved loads to an equal namespace");
    Require(Save(again) == once, "and saves to the same text");
    return 0;
}
