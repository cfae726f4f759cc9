#include "program/summary.h"

#include "text/shown_text.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr int labelWidth = 12;

void PrintRow(std::ostream& out, std::string_view label, std::string_view text) {
    out << std::left << std::setw(labelWidth) << label << ToShownText(text) << '\n';
}

std::string WithThousands(std::uintmax_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, ",");
    }
    return text;
}

std::string DescribeResources(const TInventoryDocument& document) {
    std::uint64_t total = 0;
    std::string kinds;
    for (const auto& [type, count] : document.resources) {
        total += count;
        kinds += (kinds.empty() ? "" : ", ") + std::to_string(count) + " " + type;
    }
    return std::to_string(total) + " resources: " + kinds;
}

std::string DescribeFile(const std::string& directory, const TInventoryDocument& document) {
    const auto path = (std::filesystem::path(directory) / document.fileName).lexically_normal();
    return path.string() + ", " + WithThousands(document.sizeBytes) + " bytes";
}

std::string Count(std::size_t number, const std::string& word) {
    return std::to_string(number) + " " + word + (number == 1 ? "" : "s");
}

// Names only the first few sources, which is enough to recognise what is missing.
std::string DescribeSources(const std::vector<std::string>& sources, const std::string& problem) {
    constexpr std::size_t maxNamed = 3;
    std::string text = Count(sources.size(), "source") + " " + problem + ": ";
    for (std::size_t i = 0; i < std::min(maxNamed, sources.size()); ++i) {
        text += (i == 0 ? "" : ", ") + sources[i];
    }
    return text + (sources.size() > maxNamed ? ", ..." : "");
}

// Counts the values that a source may have, in one row. What no source has is not worth a count.
std::string DescribeUnknownValues(const TValueCounts& counts) {
    constexpr EValueStatus statuses[] = {EValueStatus::denied,    EValueStatus::asleep,
                                         EValueStatus::timedOut,  EValueStatus::unread,
                                         EValueStatus::malformed, EValueStatus::placeholder};
    std::size_t total = 0;
    std::string kinds;
    for (const EValueStatus status : statuses) {
        if (const std::size_t count = counts[static_cast<std::size_t>(status)]; count != 0) {
            total += count;
            kinds += (kinds.empty() ? "" : ", ") + std::to_string(count) + " " +
                     std::string(NameValueStatus(status));
        }
    }
    return total == 0 ? "" : Count(total, "value") + " not known: " + kinds + "; see noxinfo show --sources";
}

// The format of the documents requires some values to be written unescaped, so a document can be malformed.
void PrintFaults(const std::vector<TInventoryDocument>& documents, std::ostream& out) {
    for (const TInventoryDocument& document : documents) {
        if (document.fault) {
            PrintRow(out, "Malformed",
                     document.fileName + " is not well-formed XML: unescaped value in line " +
                         std::to_string(document.fault->line) + ": " + document.fault->text);
        }
    }
}

std::string DescribeTimes(const std::vector<TStepTime>& times) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1);
    std::string_view separator;
    for (const TStepTime& time : times) {
        const std::chrono::duration<double, std::milli> milliseconds = time.duration;
        text << separator << time.step << ' ' << milliseconds.count() << " ms";
        separator = ", ";
    }
    return text.str();
}

}  // namespace

void PrintOutcome(const TCollectOutcome& outcome, std::ostream& out) {
    if (outcome.failedCollectors != 0) {
        PrintRow(out, "Failed", Count(outcome.failedCollectors, "collector") + "; see the log (--verbose)");
    }
    const auto& denied = outcome.deniedSources;
    if (!denied.empty()) {
        PrintRow(out, "Denied", DescribeSources(denied, denied.size() == 1 ? "needs root" : "need root"));
    }
    if (!outcome.failedSources.empty()) {
        PrintRow(out, "Unread", DescribeSources(outcome.failedSources, "could not be read"));
    }
    if (!outcome.timedOutSources.empty()) {
        PrintRow(out, "Timed out", DescribeSources(outcome.timedOutSources, "did not answer in time"));
    }
    if (!outcome.asleepSources.empty()) {
        PrintRow(out, "Asleep", DescribeSources(outcome.asleepSources, "would wake a device (see --wake)"));
    }
    if (const std::string unknown = DescribeUnknownValues(outcome.values); !unknown.empty()) {
        PrintRow(out, "Values", unknown);
    }
    for (const std::string& warning : outcome.warnings) {
        PrintRow(out, "Warning", warning);
    }
    if (outcome.replacedBytes != 0) {
        PrintRow(out, "Replaced",
                 Count(outcome.replacedBytes, "byte") + " of device text " +
                     (outcome.replacedBytes == 1 ? "was" : "were") + " not valid UTF-8");
    }
}

void PrintSummary(const TRunSummary& summary, std::ostream& out) {
    PrintRow(out, "Machine", summary.machine);
    PrintRow(out, "Source", summary.origin);
    if (!summary.documents.empty()) {
        PrintRow(out, "Collected", DescribeResources(summary.documents.front()));
    }
    PrintOutcome(summary.outcome, out);
    std::string_view label = "Files";
    for (const TInventoryDocument& document : summary.documents) {
        PrintRow(out, label, DescribeFile(summary.directory, document));
        label = "";
    }
    if (summary.documents.empty()) {
        PrintRow(out, "Files", "none: the plug-in wrote no documents");
    }
    PrintFaults(summary.documents, out);
    for (const std::string& name : summary.earlierFiles) {
        PrintRow(out, "Earlier", name + " was written by an earlier run");
    }
    for (const std::string& name : summary.completedFiles) {
        PrintRow(out, "Completed", name + " of a run that was killed");
    }
    PrintRow(out, "Credential", summary.credential);
    if (summary.sending) {
        PrintSending(*summary.sending, out);
    }
    PrintRow(out, "Time", DescribeTimes(summary.times));
}

void PrintSending(const TSendingSummary& sending, std::ostream& out) {
    const TSendingReport& report = sending.report;
    const std::string sent = report.sentFiles == 0
                                 ? "nothing"
                                 : Count(report.sentFiles, "file") + " of " + Count(report.sentRuns, "run") +
                                       ", " + WithThousands(report.sentBytes) + " bytes,";
    PrintRow(out, "Sent", sent + " to " + sending.site);
    if (sending.waitingFiles != 0) {
        PrintRow(out, "Waiting",
                 Count(sending.waitingFiles, "file") + " of " + Count(sending.waitingRuns, "run") + " in " +
                     sending.spool);
    }
    if (sending.droppedRuns != 0) {
        PrintRow(out, "Dropped", Count(sending.droppedRuns, "run") + ", the oldest, because of the limit");
    }
}

void PrintCaptureSummary(const TCaptureSummary& summary, std::ostream& out) {
    std::error_code ignored;  // the size is omitted then
    const auto bytes = std::filesystem::file_size(summary.file, ignored);
    PrintRow(out, "Source", summary.origin);
    PrintRow(out, "Captured",
             Count(summary.files, "file") + " and " + Count(summary.links, "link") +
                 (summary.redacted ? ", redacted" : ""));
    if (summary.redacted) {
        PrintRow(out, "Redacted",
                 summary.redacted->empty() ? "nothing identifies the machine" : *summary.redacted);
    }
    PrintOutcome(summary.outcome, out);
    PrintRow(out, "File", summary.file + (ignored ? "" : ", " + WithThousands(bytes) + " bytes"));
}

void PrintRedactSummary(const TRedactSummary& summary, std::ostream& out) {
    const std::string replaced = DescribeCounts(summary.identities);
    PrintRow(out, "Redacted", Count(summary.files, "file") + " into " + summary.directory);
    PrintRow(out, "Replaced", replaced.empty() ? "nothing identifies a machine" : replaced);
    if (summary.keyFile) {
        PrintRow(out, "Key", *summary.keyFile + (summary.isKeyNew ? ", made by this run" : ""));
    } else {
        PrintRow(out, "Key", "not kept: other runs give other pseudonyms");
    }
    std::string_view label = "Skipped";
    for (const std::string& path : summary.skipped) {
        PrintRow(out, label, path + " is not an inventory");
        label = "";
    }
}

}  // namespace NVORHOST
