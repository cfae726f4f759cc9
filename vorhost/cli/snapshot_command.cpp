#include "vorhost/cli/snapshot_command.h"

#include "vorhost/cimxml/save.h"
#include "vorhost/cli/log_sinks.h"
#include "vorhost/cli/namespace_source.h"
#include "vorhost/cli/output_file.h"
#include "vorhost/cli/summary.h"
#include "vorhost/services/host_settings.h"

#include <iostream>

namespace NVORHOST {

EExitStatus RunSnapshot(const TSnapshotOptions& options, std::ostream& out) {
    const TOutputPlace place = FindOutputPlace(options.file, options.source.logFile);
    const TLogSinks sinks(options.source);
    THostSettings settings;
    settings.localTime = options.source.localTime;
    SetHostSettings(settings);
    const TNamespaceSource source = ObtainNamespace(options.source);
    sinks.RequireWritten();
    WriteOutputFile(place, options.file, options.source.syncs,
                    [&source](std::ostream& file) { SaveNamespace(*source.collected, file); });
    PrintTroubles(source.gaps, source.replacedBytes, place.IsStandardOutput() ? std::cerr : out);
    return StatusOf(source.gaps, options.source);
}

}  // namespace NVORHOST
