#include "program/snapshot_command.h"

#include "program/namespace_source.h"
#include "program/summary.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/services/host_settings.h"

#include <iostream>

namespace NVORHOST {

EExitStatus RunSnapshot(const TSnapshotOptions& options, std::ostream& out) {
    const TOutputPlace place = FindOutputPlace(options.file, options.source.log.file);
    const TLogSinks sinks(options.source.log);
    THostSettings settings;
    settings.localTime = options.source.machine.localTime;
    SetHostSettings(settings);
    const TNamespaceSource source = ObtainNamespace(options.source);
    sinks.RequireWritten();
    WriteOutputFile(place, options.file, options.source.syncs,
                    [&source](std::ostream& file) { SaveNamespace(*source.collected, file); });
    PrintTroubles(source.gaps, source.replacedBytes, place.IsStandardOutput() ? std::cerr : out);
    return StatusOf(source.gaps, options.source.isStrict);
}

}  // namespace NVORHOST
