#include "program/capture_command.h"

#include "machine/capture/archive.h"
#include "machine/capture/redaction.h"
#include "program/namespace_source.h"
#include "program/strict_mode.h"
#include "program/summary.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_environment.h"
#include "vorhost/run/run_failure.h"

#include <iostream>

namespace NVORHOST {
namespace {

TCaptureSummary Summarise(const TNamespaceSource& source, const TCaptureTree& tree) {
    TCaptureSummary summary;
    summary.outcome = source.outcome;
    for (const auto& [path, node] : tree.GetNodes()) {
        summary.files += node.kind == TCaptureTree::EKind::file ? 1U : 0U;
        summary.links += node.kind == TCaptureTree::EKind::link ? 1U : 0U;
    }
    return summary;
}

// An archive that still contains an identity is not written.
void RequireNothingLeft(const TRedactedMachine& redacted, const TCaptureTree& tree, const std::string& file) {
    if (const auto left = FindIdentityLeft(redacted, tree)) {
        throw TRunFailure("cannot write " + file + ": " + std::string(GetKindName(left->kind)) + " left in " +
                          left->path + " after redaction");
    }
}

}  // namespace

EExitStatus RunCapture(const TCaptureOptions& options, std::ostream& out) {
    const TOutputPlace place = ResolveOutputPlace(options.file, options.source.log.file);
    const TLogSinks sinks(options.source.log);
    const TRunEnvironment environment({.localTime = options.source.machine.localTime});
    TRecordedMachine machine;
    const TNamespaceSource source = RecordMachine(options.source, machine);

    TCaptureTree tree = machine.files.GetTree();
    TCaptureAnswers& answers = machine.answers;
    answers.refusals = machine.files.FindRefusals();
    if (source.localTime) {
        answers.localTime = source.localTime->ToString();
    }
    std::optional<TRedactedMachine> redacted;
    if (options.redacts) {
        redacted = Redact(TPseudonyms::MakeKey(), tree, answers);
    }
    TCaptureSummary summary = Summarise(source, tree);
    tree.AddFile(captureAnswersPath, FormatCaptureAnswers(answers));
    if (redacted) {
        RequireNothingLeft(*redacted, tree, options.file);
        summary.redacted = DescribeCounts(redacted->identities.CountIdentities());
    }
    sinks.RequireWritten();
    WriteOutputFile(place, options.file, options.source.syncs,
                    [&tree](std::ostream& file) { WriteArchive(tree, file); });
    if (place.IsStandardOutput()) {
        PrintOutcome(summary.outcome, std::cerr);
    } else {
        summary.origin = source.origin;
        summary.file = options.file;
        PrintCaptureSummary(summary, out);
    }
    return GetExitStatus(source.outcome, options.source.isStrict);
}

}  // namespace NVORHOST
