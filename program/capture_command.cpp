#include "program/capture_command.h"

#include "machine/capture/archive.h"
#include "machine/capture/redaction.h"
#include "program/namespace_source.h"
#include "program/summary.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/host_settings.h"

#include <iostream>

namespace NVORHOST {
namespace {

void ApplySettings(const TSourceOptions& options) {
    THostSettings settings;
    settings.localTime = options.machine.localTime;
    SetHostSettings(settings);
}

TCaptureSummary Summarise(const TNamespaceSource& source, const TCapturedTree& tree) {
    TCaptureSummary summary;
    summary.gaps = source.gaps;
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

EExitStatus RunCapture(const TCaptureOptions& options, std::ostream& out) {
    const TOutputPlace place = FindOutputPlace(options.file, options.source.log.file);
    const TLogSinks sinks(options.source.log);
    ApplySettings(options.source);
    TRecordedMachine machine;
    const TNamespaceSource source = RecordMachine(options.source, machine);

    TCapturedTree tree = machine.files.GetTree();
    TCapturedAnswers& answers = machine.answers;
    answers.refusals = machine.files.FindRefusals();
    if (source.localTime) {
        answers.localTime = source.localTime->ToString();
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
    if (place.IsStandardOutput()) {
        PrintTroubles(summary.gaps, summary.replacedBytes, std::cerr);
    } else {
        summary.origin = source.origin;
        summary.file = options.file;
        PrintCaptureSummary(summary, out);
    }
    return StatusOf(source.gaps, options.source.isStrict);
}

}  // namespace NVORHOST
