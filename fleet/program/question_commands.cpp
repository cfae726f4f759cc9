#include "fleet/program/question_commands.h"

#include "commandline/terminal.h"
#include "fleet/ask/fleet_summary.h"
#include "fleet/ask/machine_changes.h"
#include "fleet/ask/machine_inventory.h"
#include "fleet/ask/machine_list.h"
#include "fleet/ask/outliers.h"
#include "fleet/ask/part_places.h"
#include "fleet/ask/sql_answer.h"
#include "fleet/program/fleet_command_line.h"
#include "fleet/program/load_command.h"
#include "fleet/program/report_command.h"
#include "fleet/program/store_schema.h"
#include "fleet/program/store_url.h"
#include "fleet/write/answer_writer.h"
#include "inventory/write/csv_writer.h"
#include "inventory/write/json_writer.h"
#include "inventory/write/text_writer.h"
#include "vorhost/run/exit_status.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>

namespace NFLEET {
namespace {

using NINVENTORY::TTextLayout;

TTextLayout GetLayout() {
    const NVORHOST::TTerminal terminal = NVORHOST::FindTerminal();
    return {.width = terminal.width, .hasColour = terminal.hasColour, .isUtf8 = NVORHOST::HasUtf8Locale()};
}

void WriteAnswer(const TAnswer& answer, const TFleetOptions& options, std::ostream& out) {
    if (options.format == "json") {
        WriteAnswerJson(answer, out);
    } else if (options.format == "csv") {
        WriteAnswerCsv(answer, out);
    } else {
        WriteAnswerText(answer, GetLayout(), out);
    }
}

struct TQuestion {
    std::string_view command;
    TAnswer (*ask)(IFleetStore& store, const TFleetOptions& options);
};

constexpr TQuestion questions[] = {
    {"machines", [](IFleetStore& store,
                    const TFleetOptions& options) { return ListMachines(store, options.conditions); }},
    {"history",
     [](IFleetStore& store, const TFleetOptions& options) {
         return ListHistory(store, FindMachine(store, options.machine));
     }},
    {"changes",
     [](IFleetStore& store, const TFleetOptions& options) { return ListChanges(store, options.since); }},
    {"where",
     [](IFleetStore& store, const TFleetOptions& options) { return FindPart(store, options.identity); }},
    {"outliers",
     [](IFleetStore& store, const TFleetOptions& options) {
         return ListOutliers(store, options.model, options.groupBy);
     }},
    {"stale", [](IFleetStore& store,
                 const TFleetOptions& options) { return ListStaleMachines(store, options.since); }},
    {"summary", [](IFleetStore& store, const TFleetOptions&) { return SummarizeFleet(store); }},
    {"sql", [](IFleetStore& store, const TFleetOptions& options) { return AskSql(store, options.query); }},
};

int RunQuestion(const TQuestion& question, const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::asking);
    const TReading reading(*store);
    WriteAnswer(question.ask(*store, options), options, out);
    return NVORHOST::eExitDone;
}

// Writes the inventory of a machine in a format of noxinfo show.
void WriteInventory(IFleetStore& store, const TMachine& machine, const TFleetOptions& options,
                    std::unique_ptr<NINVENTORY::IInventoryFormat> format) {
    format->BeginSource(machine.key);
    PassMachine(store, machine, options.at, *format);
    format->Finish();
}

int RunShow(const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::asking);
    const TReading reading(*store);
    const TMachine machine = FindMachine(*store, options.machine);
    if (options.format == "csv") {
        WriteInventory(*store, machine, options, NINVENTORY::MakeCsvWriter(out));
        return NVORHOST::eExitDone;
    }
    const TAnswer facts = DescribeMachine(*store, machine);
    if (options.format == "json") {
        out << "{\"question\":\"show\",\"machine\":" << MakeFactsJson(facts) << ",\"inventory\":\n";
        WriteInventory(*store, machine, options, NINVENTORY::MakeJsonWriter(out));
        out << "}\n";
        return NVORHOST::eExitDone;
    }
    const TTextLayout layout = GetLayout();
    WriteFactsText(facts, layout, out);
    out << '\n';
    WriteInventory(*store, machine, options, NINVENTORY::MakeTextWriter(out, {.layout = layout}));
    return NVORHOST::eExitDone;
}

int RunExport(const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::asking);
    const auto format =
        options.exportFormat == "csv" ? NINVENTORY::MakeCsvWriter(out) : NINVENTORY::MakeNdjsonWriter(out);
    const TReading reading(*store);
    for (const TMachine& machine : store->ReadMachines()) {
        format->BeginSource(machine.key);
        PassMachine(*store, machine, std::nullopt, *format);
    }
    format->Finish();
    return NVORHOST::eExitDone;
}

int RunLoadCommand(const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::loading);
    return RunLoad(options, *store, out);
}

int RunMerge(const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::asking);
    const TMachine from = FindMachine(*store, options.machine);
    const TMachine to = FindMachine(*store, options.newMachine);
    MergeMachines(from.key, to.key, *store);
    out << "merged " << NameMachine(from) << " into " << NameMachine(to) << '\n';
    return NVORHOST::eExitDone;
}

int RunPrune(const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::asking);
    const std::uint64_t count = PruneInventories(options.keep, *store);
    out << "removed " << count << (count == 1 ? " inventory\n" : " inventories\n");
    return NVORHOST::eExitDone;
}

int RunSchema(const TFleetOptions& options, std::ostream& out) {
    WriteSchema(options.storeUrl, options.cluster, out);
    return NVORHOST::eExitDone;
}

int RunCompletion(const TFleetOptions& options, std::ostream& out) {
    WriteFleetCompletion(options.shell, out);
    return NVORHOST::eExitDone;
}

struct TOtherCommand {
    std::string_view name;
    int (*run)(const TFleetOptions& options, std::ostream& out);
};

constexpr TOtherCommand otherCommands[] = {
    {"load", RunLoadCommand}, {"report", RunFleetReport},    {"show", RunShow},
    {"export", RunExport},    {"merge", RunMerge},           {"prune", RunPrune},
    {"schema", RunSchema},    {"completion", RunCompletion},
};

}  // namespace

int RunFleetCommand(const TFleetOptions& options, std::ostream& out) {
    const auto* const question = std::ranges::find(questions, options.command, &TQuestion::command);
    if (question != std::end(questions)) {
        return RunQuestion(*question, options, out);
    }
    return std::ranges::find(otherCommands, options.command, &TOtherCommand::name)->run(options, out);
}

}  // namespace NFLEET
