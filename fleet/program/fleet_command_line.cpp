#include "fleet/program/fleet_command_line.h"

#include "commandline/completion_script.h"
#include "commandline/help_format.h"
#include "commandline/usage_check.h"
#include "fleet/ask/moment.h"
#include "text/lines.h"
#include "text/numbers.h"
#include "text/shown_text.h"
#include "vorhost/run/exit_status.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NFLEET {
namespace {

using NVORHOST::ParseNumber;
using NVORHOST::SplitAt;
using TWords = std::vector<std::string>;

constexpr char noDescription[] = "";
constexpr char programName[] = "noxinfo fleet";
constexpr char versionText[] = "noxinfo-fleet " NOXINFO_VERSION;

TSeconds RequireMoment(const std::string& option, const std::string& text, TSeconds now) {
    const auto moment = ParseMoment(text, now);
    if (!moment) {
        throw CLI::ValidationError(option, "'" + text +
                                               "' is not a date, a time such as 2026-03-01T04:00:00+01:00, "
                                               "or a span such as 7d");
    }
    return *moment;
}

NINVENTORY::TCondition RequireCondition(const std::string& text) {
    try {
        return NINVENTORY::ParseCondition(text);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--where", error.what());
    }
}

struct TKeepRule {
    std::string_view name;
    unsigned TKeepOptions::*count;
};

constexpr TKeepRule keepRules[] = {
    {"newest", &TKeepOptions::newest},
    {"daily", &TKeepOptions::days},
    {"weekly", &TKeepOptions::weeks},
    {"monthly", &TKeepOptions::months},
};

// Reads "90d" or "daily:30".
void AddKeepRule(const std::string& text, TSeconds now, TKeepOptions& keep) {
    const auto [name, number] = SplitAt(text, ':');
    const auto* const rule = std::ranges::find(keepRules, name, &TKeepRule::name);
    if (rule == std::end(keepRules)) {
        keep.since = RequireMoment("--keep", text, now);
        return;
    }
    constexpr unsigned maxCount = 1'000'000;
    const auto count = ParseNumber<unsigned>(number);
    if (!count || *count == 0 || *count > maxCount) {
        throw CLI::ValidationError("--keep",
                                   "'" + text + "' has no number from 1 to 1000000 after the colon");
    }
    keep.*rule->count = *count;
}

// The commands, and the options that receive their values.
struct TModel {
    explicit TModel(TSeconds now) {
        options.now = now;
        program.formatter(std::make_shared<NVORHOST::THelpFormat>());
        program.require_subcommand(1);
        program.set_version_flag("--version", versionText, "Print the version and exit");
        AddLoading();
        AddQuestions();
        AddTimeQuestions();
        AddReport();
        AddUpkeep();
        AddWords();
        for (CLI::App* command : program.get_subcommands({})) {
            command->group("Commands");
            command->set_help_flag("-h,--help", "Print this help and exit");
        }
        program.set_help_flag("-h,--help", "Print this help and exit");
    }

    CLI::App program{"Keeps the inventories of many machines in a database and answers questions about them.",
                     programName};
    TFleetOptions options;

  private:
    CLI::App& AddCommand(const char* name, const char* description) {
        CLI::App& command = *program.add_subcommand(name, description);
        command
            .add_option("--store", options.storeUrl,
                        "Database: sqlite:FILE (default: fleet.sqlite in the user's state directory), or "
                        "clickhouse://HOST:PORT/DATABASE")
            ->type_name("URL");
        return command;
    }

    void AddFormat(CLI::App& command, const TWords& formats) {
        std::string names;
        for (const std::string& format : formats) {
            names += (names.empty() ? "" : "|") + format;
        }
        command
            .add_option("--format", options.format, "Format of the output (default: " + formats.front() + ")")
            ->check(CLI::IsMember(formats).description(noDescription))
            ->type_name(names);
    }

    CLI::App& AddQuestion(const char* name, const char* description) {
        CLI::App& command = AddCommand(name, description);
        AddFormat(command, {"text", "json", "csv"});
        return command;
    }

    void AddArgument(CLI::App& command, const char* name, std::string& value, const char* description) {
        command.add_option(name, value, description)->type_name(name)->required();
    }

    CLI::Option* AddMoment(CLI::App& command, const std::string& option, const char* description,
                           const char* typeName, const std::function<void(TSeconds)>& assign) {
        return command
            .add_option_function<std::string>(
                option,
                [this, option, assign](const std::string& text) {
                    assign(RequireMoment(option, text, options.now));
                },
                description)
            ->type_name(typeName);
    }

    void AddThreads(CLI::App& command, const char* description) {
        command.add_option("--threads", options.threads, description)
            ->check(CLI::Range(1U, 256U).description(noDescription))
            ->type_name("NUMBER");
    }

    void AddLoading() {
        CLI::App& load = AddCommand("load", "Load inventories from files, directories and archives");
        AddThreads(load, "Read with this many threads (default: one per processor)");
        load.add_flag("--again", options.readsAgain,
                      "Also read files that did not change since they were loaded, such as to load "
                      "inventories that were pruned");
        load.add_flag("--watch", options.watches,
                      "Go on with what arrives in the directories, until a signal");
        load.add_option("PATH", options.paths,
                        "Document, snapshot or result, an archive of them, or a directory with any of these "
                        "at any depth")
            ->type_name("FILE")
            ->required();
    }

    void AddQuestions() {
        AddQuestion("machines", "List the machines")
            .add_option_function<TWords>(
                "--where",
                [this](const TWords& texts) {
                    for (const std::string& text : texts) {
                        options.conditions.push_back(RequireCondition(text));
                    }
                },
                "Only machines with this value, or with a match of this regular expression (~), of name, "
                "vendor, model, serial, uuid, key, or TYPE.PROPERTY of a part; may be given several times")
            ->allow_extra_args(false)
            ->type_name("PROPERTY=VALUE");
        CLI::App& show = AddQuestion("show", "Show a machine and its inventory");
        AddMoment(show, "--at", "Show what was known at this time (default: now)", "TIME",
                  [this](TSeconds time) { options.at = time; });
        AddMachine(show);
        AddMachine(AddQuestion("history", "List what changed in a machine, and when"));
        AddArgument(AddQuestion("where", "List every machine and place that a part has been in"), "SERIAL",
                    options.identity, "Serial number, address or other identifying value of the part");
        CLI::App& outliers =
            AddQuestion("outliers", "List in what machines differ from the others of their model");
        outliers
            .add_option(
                "--group-by", options.groupBy,
                "What compared machines have in common: model (default), vendor, or TYPE.PROPERTY of a "
                "part, such as BIOSElement.Version")
            ->type_name("PROPERTY");
        outliers.add_option("--model", options.model, "Compare only machines of this model")
            ->type_name("MODEL");
        AddQuestion("summary", "Count models, memory, disks by size and age, processors and firmware");
        AddArgument(AddQuestion("sql", "Run a query in the language of the database, which must not write"),
                    "QUERY", options.query, "Query, such as \"SELECT * FROM machine\"");
    }

    void AddTimeQuestions() {
        constexpr char timeName[] = "TIME";
        const auto setSince = [this](TSeconds time) { options.since = time; };
        CLI::App& changes = AddQuestion("changes", "List what changed in all machines");
        AddMoment(changes, "--since", "Changes at or after this time; 7d is seven days ago", timeName,
                  setSince)
            ->required();
        CLI::App& stale = AddQuestion("stale", "List machines that have sent no inventory for a time");
        AddMoment(stale, "--older-than", "Machines without an inventory since then; 7d is seven days ago",
                  timeName, setSince)
            ->required();
    }

    void AddReport() {
        CLI::App& report = AddCommand("report", "Write the fleet as a site of static pages");
        report
            .add_option("--output", options.siteDirectory,
                        "Directory of the site, which is replaced as a whole if this command made it")
            ->type_name("DIR")
            ->required();
        AddMoment(report, "--now", "Count ages from this time (default: that of the newest inventory)",
                  "TIME", [this](TSeconds time) { options.reportNow = time; });
        AddThreads(report, "Write with this many threads (default: one per processor)");
    }

    void AddMachine(CLI::App& command) {
        AddArgument(command, "MACHINE", options.machine,
                    "Name, serial number, UUID or key of the machine, or the first digits of its identifier");
    }

    void AddUpkeep() {
        AddExport();
        AddCommand("prune", "Remove old inventories")
            .add_option_function<TWords>(
                "--keep",
                [this](const TWords& rules) {
                    for (const std::string& rule : rules) {
                        AddKeepRule(rule, options.now, options.keep);
                    }
                },
                "Keep inventories for which one of these holds: since a time (90d), newest:N, daily:N, "
                "weekly:N or monthly:N of each machine. The newest of a machine is always kept")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("RULE,...")
            ->required();
        CLI::App& merge = AddCommand("merge", "Make one machine the continuation of another one");
        AddArgument(merge, "OLD", options.machine,
                    "Machine that is no longer seen, such as before its board was replaced");
        AddArgument(merge, "NEW", options.newMachine, "Machine that receives its history");
        AddCommand("schema", "Print the statements that make the tables of the database")
            .add_option("--cluster", options.cluster,
                        "ClickHouse: print those for each server of this cluster")
            ->type_name("CLUSTER");
    }

    void AddExport() {
        AddCommand("export", "Write the present inventories of all machines")
            .add_option("--format", options.exportFormat, "Format of the output (default: ndjson)")
            ->check(CLI::Validator(
                [](const std::string& format) {
                    return std::string(
                        format == "parquet"
                            ? "parquet is not supported, because Debian has no library for it; "
                              "csv and ndjson can be converted"
                        : format == "ndjson" || format == "csv"
                            ? ""
                            : "'" + format + "' is not one of ndjson, csv");
                },
                noDescription))
            ->type_name("ndjson|csv");
    }

    void AddWords() {
        program.add_subcommand("completion", "Print the completion script of a shell")
            ->add_option("SHELL", options.shell, "Shell that the script is for (default: bash)")
            ->check(CLI::IsMember(NVORHOST::ListShells()).description(noDescription))
            ->type_name("bash|zsh|fish");
        program.add_subcommand("help", "Print this help, or the help of a command")
            ->add_option("COMMAND", options.helpTopic, "Command to describe")
            ->type_name("COMMAND");
        program.add_subcommand("version", "Print the version");
    }
};

std::string HelpCommandFor(const CLI::App* command) {
    const bool hasOwn = command != nullptr && command->get_name() != "help";
    return std::string(programName) + (hasOwn ? " " + command->get_name() : "") + " --help";
}

// Moves "--store URL" from before the command to its end, where its other options are.
TWords MoveStore(TWords words) {
    constexpr std::string_view option = "--store";
    TWords moved;
    while (!words.empty() && words.front().starts_with(option)) {
        const std::ptrdiff_t count = words.front() == option && words.size() > 1 ? 2 : 1;
        moved.insert(moved.end(), words.begin(), words.begin() + count);
        words.erase(words.begin(), words.begin() + count);
    }
    if (!words.empty()) {
        words.insert(words.begin() + 1, moved.begin(), moved.end());
        return words;
    }
    return moved;
}

void Parse(CLI::App& program, TWords words) {
    if (words.empty()) {
        words = {"--help"};
    }
    NVORHOST::CheckWords(program, words);
    words = NVORHOST::WithoutHelpCommand(program, std::move(words));
    NVORHOST::CheckWords(program, words);
    std::ranges::reverse(words);  // CLI11 expects the words in reverse order
    program.parse(std::move(words));
}

}  // namespace

TFleetOptions ParseFleetCommandLine(int argc, const char* const* argv, TSeconds now) {
    const TWords words = MoveStore(TWords(argv + std::min(argc, 1), argv + argc));
    TModel model(now);
    try {
        Parse(model.program, words);
    } catch (const CLI::Success& request) {
        model.options.earlyStatus = model.program.exit(request);
        return model.options;
    } catch (const CLI::ParseError& error) {
        std::cerr << programName << ": " << NVORHOST::ToShownText(error.what()) << "\nTry '"
                  << HelpCommandFor(NVORHOST::FindCommand(model.program, words)) << "'.\n";
        model.options.earlyStatus = NVORHOST::eExitUsage;
        return model.options;
    }
    model.options.command = model.program.get_subcommands().front()->get_name();
    if (model.options.command == "version") {
        std::cout << versionText << '\n';
        model.options.command.clear();
    }
    return model.options;
}

void WriteFleetCompletion(const std::string& shell, std::ostream& out) {
    NVORHOST::TCompletionTable table = NVORHOST::MakeCompletionTable(TModel(0).program);
    table.programName = "noxinfo-fleet";
    NVORHOST::WriteCompletionScript(table, shell, out);
}

}  // namespace NFLEET
