#include "vorhost/cli/snapshot_command.h"

#include "vorhost/cimxml/save.h"
#include "vorhost/cli/log_sinks.h"
#include "vorhost/cli/namespace_source.h"
#include "vorhost/cli/output_file.h"
#include "vorhost/services/host_settings.h"

#include <ostream>

namespace NVORHOST {

void RunSnapshot(const TSnapshotOptions& options) {
    const TOutputPlace file = FindOutputPlace(options.file, options.source.logFile);
    const TLogSinks sinks(options.source);
    THostSettings settings;
    settings.localTime = options.source.localTime;
    SetHostSettings(settings);
    const TNamespaceSource source = ObtainNamespace(options.source);
    sinks.RequireWritten();
    WriteOutputFile(file, options.file, options.source.syncs,
                    [&source](std::ostream& out) { SaveNamespace(*source.collected, out); });
}

}  // namespace NVORHOST
