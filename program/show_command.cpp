#include "program/show_command.h"

#include "commandline/terminal.h"
#include "inventory/report/report_writer.h"
#include "inventory/write/csv_writer.h"
#include "inventory/write/cyclonedx_writer.h"
#include "inventory/write/document_format.h"
#include "inventory/write/json_writer.h"
#include "inventory/write/openmetrics_writer.h"
#include "inventory/write/text_writer.h"
#include "program/inventory_source.h"
#include "program/strict_mode.h"
#include "program/summary.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_environment.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

namespace NVORHOST {
namespace {

using NINVENTORY::IInventoryFormat;

std::unique_ptr<IInventoryFormat> MakeText(std::ostream& out, const TShowOptions& options) {
    const TTerminal terminal = options.outputFile ? TTerminal{} : FindTerminal();
    return NINVENTORY::MakeTextWriter(out,
                                      {.layout = {.width = terminal.width, .hasColour = terminal.hasColour},
                                       .isLong = options.isLong,
                                       .hasSources = options.hasSources});
}

std::unique_ptr<IInventoryFormat> MakeReport(std::ostream& out, const TShowOptions& options) {
    using NINVENTORY::EReportSources;
    return NINVENTORY::MakeReportWriter(
        out, options.comparesSources ? EReportSources::compared : EReportSources::separate);
}

struct TFormatRow {
    std::string_view name;
    std::unique_ptr<IInventoryFormat> (*make)(std::ostream& out, const TShowOptions& options);
    bool joinsFolders = false;  // the documents of a folder are one source
};

constexpr TFormatRow formats[] = {
    {"text", &MakeText},
    {"json", [](std::ostream& out, const TShowOptions&) { return NINVENTORY::MakeJsonWriter(out); }},
    {"ndjson", [](std::ostream& out, const TShowOptions&) { return NINVENTORY::MakeNdjsonWriter(out); }},
    {"csv", [](std::ostream& out, const TShowOptions&) { return NINVENTORY::MakeCsvWriter(out); }},
    {"html", &MakeReport, /*joinsFolders=*/true},
    {"cyclonedx",
     [](std::ostream& out, const TShowOptions&) { return NINVENTORY::MakeCycloneDxWriter(out); }},
    {"openmetrics",
     [](std::ostream& out, const TShowOptions&) { return NINVENTORY::MakeOpenMetricsWriter(out); }},
    {"xml", [](std::ostream& out, const TShowOptions&) { return NINVENTORY::MakeDocumentFormat(out); }},
};

// Writes all sources and returns what was missing of the machine.
TCollectOutcome WriteSources(const TShowOptions& options, std::ostream& out) {
    const auto* const row = std::ranges::find(formats, options.format, &TFormatRow::name);
    const std::unique_ptr<IInventoryFormat> format = row->make(out, options);
    NINVENTORY::TFilterSettings settings = options.filter;
    settings.keepsSources = options.hasSources;
    NINVENTORY::TResourceFilter filter(settings, *format);
    const TBeginSource begin = [&](const std::string& name) { format->BeginSource(name); };
    TSourceOptions machine = options.machine;
    machine.machine.withSources = options.hasSources;
    TCollectOutcome outcome;
    if (options.sources.empty()) {
        outcome = PassMachine(machine, begin, filter);
    }
    for (const std::string& source : options.sources) {
        bool hasBegun = false;
        const TBeginSource beginOnce = [&](const std::string& name) {
            if (!row->joinsFolders || !std::exchange(hasBegun, true)) {
                begin(row->joinsFolders && source != "-" ? source : name);
            }
        };
        AddOutcome(PassSource(source, machine, beginOnce, filter), outcome);
    }
    format->Finish();
    return outcome;
}

}  // namespace

EExitStatus RunShow(const TShowOptions& options, std::ostream& out) {
    std::optional<TOutputPlace> place;
    if (options.outputFile) {
        place.emplace(ResolveOutputPlace(*options.outputFile, options.machine.log.file));
    }
    const TLogSinks sinks(options.machine.log);
    const TRunEnvironment environment({.localTime = options.machine.machine.localTime});
    TCollectOutcome outcome;
    if (place) {
        WriteOutputFile(*place, *options.outputFile, options.machine.syncs,
                        [&](std::ostream& file) { outcome = WriteSources(options, file); });
    } else {
        outcome = WriteSources(options, out);
    }
    // Gaps are part of the text for people, and must not disturb other formats.
    PrintOutcome(outcome, options.format == "text" && !place ? out : std::cerr);
    return GetExitStatus(outcome, options.machine.isStrict);
}

std::vector<std::string> ListShowFormats() {
    std::vector<std::string> names;
    std::ranges::transform(formats, std::back_inserter(names),
                           [](const TFormatRow& row) { return std::string(row.name); });
    return names;
}

}  // namespace NVORHOST
