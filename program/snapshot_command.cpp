#include "program/snapshot_command.h"

#include "program/namespace_source.h"
#include "program/snapshot_file.h"
#include "program/strict_mode.h"
#include "program/summary.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_environment.h"

#include <iostream>

namespace NVORHOST {

EExitStatus RunSnapshot(const TSnapshotOptions& options, std::ostream& out) {
    const TOutputPlace place = ResolveOutputPlace(options.file, options.source.log.file);
    const TLogSinks sinks(options.source.log);
    const TRunEnvironment environment({.localTime = options.source.machine.localTime});
    TSourceOptions wanted = options.source;
    wanted.machine.withSources = options.hasSources;
    const TNamespaceSource source = ObtainNamespace(wanted);
    sinks.RequireWritten();
    WriteOutputFile(place, options.file, options.source.syncs,
                    [&](std::ostream& file) { WriteSnapshot(*source.collected, options.file, file); });
    PrintOutcome(source.outcome, place.IsStandardOutput() ? std::cerr : out);
    return GetExitStatus(source.outcome, options.source.isStrict);
}

}  // namespace NVORHOST
