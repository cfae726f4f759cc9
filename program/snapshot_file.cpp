#include "program/snapshot_file.h"

#include "vorhost/cimxml/gzip_output.h"
#include "vorhost/cimxml/save.h"

namespace NVORHOST {

void WriteSnapshot(const TMemoryNamespace& collected, std::string_view path, std::ostream& out) {
    if (!path.ends_with(".gz")) {
        SaveNamespace(collected, out);
        return;
    }
    WriteCompressed(out, [&collected](std::ostream& text) { SaveNamespace(collected, text); });
}

}  // namespace NVORHOST
