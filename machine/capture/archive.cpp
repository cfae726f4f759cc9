#include "machine/capture/archive.h"

#include "machine/capture/archive_module_entry.h"
#include "os/module.h"

#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

template <typename TEntry>
TEntry LoadEntry(const char* name, const std::string& part) {
    try {
        return LoadFunction<TEntry>(
            FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_ARCHIVE_MODULE), name);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("the archive " + part + " cannot be loaded: " + error.what());
    }
}

}  // namespace

void WriteArchive(const TCaptureTree& tree, std::ostream& out) {
    LoadEntry<TArchiveEntry>(archiveEntryName, "writer")(tree, out);
}

TCaptureTree ReadArchive(const std::string& path) {
    TCaptureTree tree;
    LoadEntry<TUnpackEntry>(unpackEntryName, "reader")(path, tree);
    return tree;
}

}  // namespace NVORHOST
