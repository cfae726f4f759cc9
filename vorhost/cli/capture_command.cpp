#include "vorhost/cli/capture_command.h"

#include "vorhost/capture/archive.h"
#include "vorhost/capture/capturing_files.h"
#include "vorhost/capture/capturing_system_calls.h"
#include "vorhost/capture/redaction.h"
#include "vorhost/cli/log_sinks.h"
#include "vorhost/cli/machine_door.h"
#include "vorhost/cli/namespace_source.h"
#include "vorhost/cli/output_file.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/cli/summary.h"
#include "vorhost/services/host_settings.h"

namespace NVORHOST {
namespace {

void ApplySettings(const TSourceOptions& options) {
    THostSettings settings;
    settings.localTime = options.localTime;
    SetHostSettings(settings);
}

TCaptureSummary Summarise(const TNamespaceSource& source, const TCapturedTree& tree) {
    TCaptureSummary summary;
    summary.failedCollectors = source.failedCollectors;
    summary.deniedSources = source.deniedSources;
    summary.failedSources = source.failedSources;
    summary.warnings = source.warnings;
    summary.replacedBytes = source.replacedBytes;
    for (const auto& [path, node] : tree.GetNodes()) {
        summary.files += node.kind == TCapturedTree::EKind::file ? 1U : 0U;
        summary.links += node.kind == TCapturedTree::EKind::link ? 1U : 0U;
    }
    return summary;
}

// A capture with an identity in it is never written.
void RequireNothingLeft(const TRedactedMachine& redacted, const TCapturedTree& tree,
                        const std::string& file) {
    if (const auto left = FindIdentityLeft(redacted, tree)) {
        throw TRunFailure("cannot write " + file + ": " + std::string(NameOf(left->kind)) + " left in " +
                          left->path + " after redaction");
    }
}

}  // namespace

void RunCapture(const TCaptureOptions& options, std::ostream& out) {
    const TOutputPlace place = FindOutputPlace(options.file, options.source.logFile);
    const TLogSinks sinks(options.source);
    ApplySettings(options.source);
    const TMachineDoor machine(options.source);
    const TCapturingFiles files(machine.GetFiles());
    const TCapturingSystemCalls calls(machine.GetCalls());
    const auto localTime = machine.GetLocalTime();
    const TNamespaceSource source = CollectNamespace(files, calls, localTime, options.source.collectors);

    TCapturedTree tree = files.GetTree();
    TCapturedAnswers answers = calls.GetAnswers();
    answers.refusals = files.FindRefusals();
    if (localTime) {
        answers.localTime = localTime->ToString();
    }
    std::optional<TRedactedMachine> redacted;
    if (options.redacts) {
        redacted = Redact(TPseudonyms::MakeKey(), tree, answers);
    }
    TCaptureSummary summary = Summarise(source, tree);
    tree.AddFile(capturedAnswersPath, FormatCapturedAnswers(answers));
    if (redacted) {
        RequireNothingLeft(*redacted, tree, options.file);
        summary.redacted = DescribeCounts(redacted->identities.CountIdentities());
    }
    sinks.RequireWritten();
    WriteOutputFile(place, options.file, options.source.syncs,
                    [&tree](std::ostream& file) { WriteArchive(tree, file); });
    if (!place.IsStandardOutput()) {
        summary.origin = machine.Describe();
        summary.file = options.file;
        PrintCaptureSummary(summary, out);
    }
}

}  // namespace NVORHOST
