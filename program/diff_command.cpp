#include "program/diff_command.h"

#include "commandline/terminal.h"
#include "inventory/compare/comparison.h"
#include "inventory/report/diff_page.h"
#include "inventory/write/diff_json_writer.h"
#include "inventory/write/diff_text_writer.h"
#include "program/inventory_source.h"
#include "program/summary.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_environment.h"
#include "vorhost/run/run_failure.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

using NINVENTORY::TComparison;
using NINVENTORY::TInventory;

class TInventoryRecorder final : public NINVENTORY::IDocumentEvents {
  public:
    explicit TInventoryRecorder(TInventory& inventory) : inventory_(inventory) {}

    void BeginDocument(const NINVENTORY::TDocumentHead& head) override {
        inventory_.documents.push_back(head);
    }
    void BeginList(std::string_view listType, int /*line*/) override {
        inventory_.types.emplace_back(listType);
    }
    void AddResource(NINVENTORY::TResource&& resource) override {
        resource.properties.shrink_to_fit();  // it grew by doubling, and all resources stay in memory
        inventory_.resources.push_back(std::move(resource));
    }

    void NoteUnknownType(std::string_view type, const TValueSource& source) override {
        inventory_.unknownTypes.push_back({std::string(type), source});
    }

  private:
    TInventory& inventory_;
};

// Reads the source, or this machine if there is none, and adds what was missing of it to `outcome`.
TInventory ReadInventory(const std::optional<std::string>& path, const TSourceOptions& options,
                         TCollectOutcome& outcome) {
    TInventory inventory;
    TInventoryRecorder recorder(inventory);
    const TBeginSource begin = [&](const std::string& name) { inventory.source = name; };
    AddOutcome(path ? PassSource(*path, options, begin, recorder) : PassMachine(options, begin, recorder),
               outcome);
    return inventory;
}

void WriteText(const TComparison& comparison, const TInventory& before, const TInventory& after,
               const TDiffOptions& options, std::ostream& out) {
    const TTerminal terminal = options.outputFile ? TTerminal{} : FindTerminal();
    WriteDiffText(comparison, before, after,
                  {.width = terminal.width, .hasColour = terminal.hasColour, .isUtf8 = HasUtf8Locale()}, out);
}

struct TFormatRow {
    std::string_view name;
    void (*write)(const TComparison& comparison, const TInventory& before, const TInventory& after,
                  const TDiffOptions& options, std::ostream& out);
};

constexpr TFormatRow formats[] = {
    {"text", &WriteText},
    {"json", [](const TComparison& comparison, const TInventory& before, const TInventory& after,
                const TDiffOptions&, std::ostream& out) { WriteDiffJson(comparison, before, after, out); }},
    {"ndjson",
     [](const TComparison& comparison, const TInventory& before, const TInventory& after, const TDiffOptions&,
        std::ostream& out) { WriteDiffNdjson(comparison, before, after, out); }},
    {"html", [](const TComparison& comparison, const TInventory& before, const TInventory& after,
                const TDiffOptions&, std::ostream& out) { WriteDiffPage(comparison, before, after, out); }},
};

}  // namespace

EDiffStatus RunDiff(const TDiffOptions& options, std::ostream& out) {
    if (options.before == "-" && options.after == "-") {
        throw TRunFailure("only one of the two sources can be standard input");
    }
    const TLogSinks sinks(options.machine.log);
    const TRunEnvironment environment({.localTime = options.machine.machine.localTime});
    TCollectOutcome outcome;
    TSourceOptions machine = options.machine;
    machine.machine.withSources = true;  // a value that is not known is not a value that is gone
    const TInventory before = ReadInventory(options.before, machine, outcome);
    const TInventory after = ReadInventory(options.after, machine, outcome);
    const TComparison comparison = Compare(before, after, options.settings);
    const auto* const row = std::ranges::find(formats, options.format, &TFormatRow::name);
    if (options.outputFile) {
        const TOutputPlace place = ResolveOutputPlace(*options.outputFile, options.machine.log.file);
        WriteOutputFile(place, *options.outputFile, options.machine.syncs,
                        [&](std::ostream& file) { row->write(comparison, before, after, options, file); });
    } else {
        row->write(comparison, before, after, options, out);
    }
    PrintOutcome(outcome, options.format == "text" && !options.outputFile ? out : std::cerr);
    if (options.machine.isStrict && outcome.HasGaps()) {
        return eDiffGaps;
    }
    return comparison.IsSame() ? eDiffSame : eDiffDifferent;
}

std::vector<std::string> ListDiffFormats() {
    std::vector<std::string> names;
    std::ranges::transform(formats, std::back_inserter(names),
                           [](const TFormatRow& row) { return std::string(row.name); });
    return names;
}

}  // namespace NVORHOST
