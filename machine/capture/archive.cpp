#include "machine/capture/archive.h"

#include "machine/capture/archive_module_entry.h"
#include "os/module.h"

#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

TArchiveEntry LoadEntry() {
    try {
        return LoadFunction<TArchiveEntry>(
            FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_ARCHIVE_MODULE), archiveEntryName);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("the archive writer cannot be loaded: ") + error.what());
    }
}

}  // namespace

void WriteArchive(const TCaptureTree& tree, std::ostream& out) {
    LoadEntry()(tree, out);
}

}  // namespace NVORHOST
