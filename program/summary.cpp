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

// The first few by name: enough to see what kind of thing is missing.
std::string DescribeSources(const std::vector<std::string>& sources, const std::string& what) {
    constexpr std::size_t named = 3;
    std::string text = Count(sources.size(), "source") + " " + what + ": ";
    for (std::size_t i = 0; i < std::min(named, sources.size()); ++i) {
        text += (i == 0 ? "" : ", ") + sources[i];
    }
    return text + (sources.size() > named ? ", ..." : "");
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

void PrintTroubles(const TSourceGaps& gaps, std::size_t replacedBytes, std::ostream& out) {
    if (gaps.failedCollectors != 0) {
        PrintRow(out, "Failed",
                 Count(gaps.failedCollectors, "collector") + "; the log tells which (--verbose)");
    }
    const auto& denied = gaps.deniedSources;
    if (!denied.empty()) {
        PrintRow(out, "Denied", DescribeSources(denied, denied.size() == 1 ? "needs root" : "need root"));
    }
    if (!gaps.failedSources.empty()) {
        PrintRow(out, "Unread", DescribeSources(gaps.failedSources, "could not be read"));
    }
    if (!gaps.timedOutSources.empty()) {
        PrintRow(out, "Timed out", DescribeSources(gaps.timedOutSources, "did not answer in time"));
    }
    for (const std::string& warning : gaps.warnings) {
        PrintRow(out, "Warning", warning);
    }
    if (replacedBytes != 0) {
        PrintRow(out, "Replaced", Count(replacedBytes, "byte") + " of texts, being no characters");
    }
}

namespace {

// Some values are written unescaped, as the documents' format has it; readers that parse XML stop there.
void PrintFaults(const std::vector<TInventoryDocument>& documents, std::ostream& out) {
    for (const TInventoryDocument& document : documents) {
        if (document.faultyLine != 0) {
            PrintRow(out, "Malformed",
                     document.fileName + " is no XML: line " + std::to_string(document.faultyLine) +
                         " has an unescaped value: " + document.faultyText);
        }
    }
}

}  // namespace

void PrintSummary(const TRunSummary& summary, std::ostream& out) {
    PrintRow(out, "Machine", summary.machine);
    PrintRow(out, "Source", summary.origin);
    PrintRow(out, "Collected", DescribeResources(summary.documents.front()));
    PrintTroubles(summary.gaps, summary.replacedBytes, out);
    std::string_view label = "Files";
    for (const TInventoryDocument& document : summary.documents) {
        PrintRow(out, label, DescribeFile(summary.directory, document));
        label = "";
    }
    PrintFaults(summary.documents, out);
    for (const std::string& name : summary.earlierFiles) {
        PrintRow(out, "Earlier", name + " is of an earlier run");
    }
    for (const std::string& name : summary.completedFiles) {
        PrintRow(out, "Completed", name + " of a run that was killed");
    }
    PrintRow(out, "Credential", summary.credential);
    PrintRow(out, "Time", DescribeTimes(summary.times));
}

void PrintCaptureSummary(const TCaptureSummary& summary, std::ostream& out) {
    std::error_code ignored;  // the size is for people only
    const auto bytes = std::filesystem::file_size(summary.file, ignored);
    PrintRow(out, "Source", summary.origin);
    PrintRow(out, "Captured",
             Count(summary.files, "file") + " and " + Count(summary.links, "link") +
                 (summary.redacted ? ", redacted" : ""));
    if (summary.redacted) {
        PrintRow(out, "Redacted",
                 summary.redacted->empty() ? "nothing identifies the machine" : *summary.redacted);
    }
    PrintTroubles(summary.gaps, summary.replacedBytes, out);
    PrintRow(out, "File", summary.file + (ignored ? "" : ", " + WithThousands(bytes) + " bytes"));
}

}  // namespace NVORHOST
