#include "vorhost/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

using NKELVOR20::TCIMDateTime;

struct TReachabilityName {
    std::string_view name;
    EReachability reachability;
};

constexpr TReachabilityName reachabilityNames[] = {
    {"network", EReachability::network},
    {"yes", EReachability::yes},
    {"no", EReachability::no},
};

EReachability ReadReachability(const std::string& text) {
    const auto* const row = std::ranges::find(reachabilityNames, text, &TReachabilityName::name);
    if (row == std::end(reachabilityNames)) {
        throw CLI::ValidationError("--reachability", "'" + text + "' is none of network, yes, no");
    }
    return row->reachability;
}

TCIMDateTime ReadLocalTime(const std::string& text) {
    const auto time = TCIMDateTime::FromText(text);
    if (!time || time->IsInterval()) {
        throw CLI::ValidationError("--local-time", "'" + text +
                                                       "' is no CIM date-time such as "
                                                       "20240229134500.000000+060");
    }
    return *time;
}

// Splits "NAME,NAME"; every name must be a collector's.
std::vector<std::string> ReadCollectorNames(const std::string& option, const std::string& text) {
    std::vector<std::string> names;
    std::istringstream words(text);
    for (std::string name; std::getline(words, name, ',');) {
        if (std::ranges::find(GetCollectors(), name, &TCollector::name) == GetCollectors().end()) {
            std::string known;
            for (const TCollector& collector : GetCollectors()) {
                known += known.empty() ? "" : ", ";
                known += collector.name;
            }
            throw CLI::ValidationError(option, "'" + name + "' is none of " + known);
        }
        names.push_back(name);
    }
    return names;
}

CLI::Option* AddCollectorNames(CLI::App& command, const std::string& option, std::vector<std::string>& names,
                               const std::string& description) {
    return command
        .add_option_function<std::string>(
            option, [option, &names](const std::string& text) { names = ReadCollectorNames(option, text); },
            description)
        ->join(',')
        ->type_name("NAME,...");
}

// Every command that looks at a machine.
std::vector<CLI::Option*> AddMachineOptions(CLI::App& command, TSourceOptions& options) {
    return {
        command
            .add_option("--sysroot", options.sysroot,
                        "Collect from the tree below this directory instead of /")
            ->type_name("DIR"),
        AddCollectorNames(command, "--only", options.collectors.only,
                          "Run these collectors alone; vorhost collectors lists them"),
        AddCollectorNames(command, "--skip", options.collectors.skip, "Run every collector but these"),
        command.add_flag("--with-processes", options.collectors.withProcesses,
                         "Collect the running processes, too"),
    };
}

void AddRunOptions(CLI::App& command, TSourceOptions& options) {
    command
        .add_option_function<std::string>(
            "--local-time", [&options](const std::string& text) { options.localTime = ReadLocalTime(text); },
            "Use this local time instead of the clock: yyyymmddhhmmss.mmmmmm and the offset from UTC in "
            "minutes, as +060")
        ->type_name("CIMDATETIME");
    command
        .add_option("--log-file", options.logFile, "Append every log line, as LEVEL MESSAGE, to this file")
        ->type_name("FILE");
    command.add_flag("--verbose", options.verbose, "Print debug and warning lines to standard error");
}

// A saved namespace takes the place of the machine.
void AddSourceOptions(CLI::App& command, TSourceOptions& options) {
    auto* file = command
                     .add_option("--namespace", options.namespaceFile,
                                 "Take the namespace from this CIM-XML file instead of the machine")
                     ->type_name("FILE");
    for (CLI::Option* option : AddMachineOptions(command, options)) {
        option->excludes(file);
    }
    AddRunOptions(command, options);
}

void AddCollectCommand(CLI::App& program, TCollectOptions& options) {
    CLI::App& command = *program.add_subcommand("collect", "Write the inventory files of this machine");
    AddSourceOptions(command, options.source);
    command
        .add_option("--directory", options.directory,
                    "Directory that receives the inventory files (default: the current one)")
        ->type_name("DIR");
    command
        .add_option("--kel-id", options.kelId,
                    "Customer identity of this run (default: the environment variable ZETKELID)")
        ->type_name("ID");
    command
        .add_option_function<std::string>(
            "--reachability",
            [&options](const std::string& text) { options.reachability = ReadReachability(text); },
            "Whether the maker's web server counts as reachable: network (really tried, the default), yes, "
            "no")
        ->type_name("network|yes|no");
    command
        .add_option("--entity-service", options.entityService,
                    "Ask this service for the credential instead of deriving it")
        ->type_name("URL");
    command
        .add_option("--plugin", options.pluginFile,
                    "Plug-in to run (default: the one installed with this program)")
        ->type_name("FILE");
    command.add_flag("--isolate", options.isolates,
                     "Run the plug-in in a process of its own, which it may take down without harm");
    command.add_option("--result", options.resultFile, "Write the result instances to this file, as CIM-XML")
        ->type_name("FILE");
}

void AddSnapshotCommand(CLI::App& program, TSnapshotOptions& options) {
    CLI::App& command = *program.add_subcommand("snapshot", "Save the whole namespace as CIM-XML");
    AddSourceOptions(command, options.source);
    command.add_option("file", options.file, "File to write; - is standard output")
        ->type_name("FILE")
        ->required();
}

void AddCaptureCommand(CLI::App& program, TCaptureOptions& options) {
    CLI::App& command =
        *program.add_subcommand("capture", "Pack the files that the collectors read, as a test case");
    AddMachineOptions(command, options.source);
    AddRunOptions(command, options.source);
    command.add_flag("--redact", options.redacts,
                     "Replace serial numbers, UUIDs, WWNs, MAC and IP addresses and host names by stable "
                     "pseudonyms");
    command.add_option("file", options.file, "Archive to write, FILE.tar.xz; - is standard output")
        ->type_name("FILE")
        ->required();
}

std::string HelpCommandFor(const CLI::App& program) {
    const auto chosen = program.get_subcommands();
    return chosen.empty() ? "vorhost --help" : "vorhost " + chosen.front()->get_name() + " --help";
}

}  // namespace

TCommand ParseCommandLine(int argc, const char* const* argv) {
    TCollectOptions collect;
    TSnapshotOptions snapshot;
    TCaptureOptions capture;
    CLI::App program("Hardware inventory of a Linux machine.", "vorhost");
    program.require_subcommand(1);
    program.set_version_flag("--version", "vorhost " NOXINFO_VERSION);
    program.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "vorhost: " + std::string(error.what()) + "\n";
    });
    AddCollectCommand(program, collect);
    AddSnapshotCommand(program, snapshot);
    AddCaptureCommand(program, capture);
    program.add_subcommand("collectors", "List the collectors, what each fills and what it reads");
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = program.exit(error);
        if (status == eExitDone) {
            return TEarlyExit{eExitDone};
        }
        std::cerr << "Try '" << HelpCommandFor(program) << "'.\n";
        return TEarlyExit{eExitUsage};
    }
    if (program.got_subcommand("collect")) {
        return collect;
    }
    if (program.got_subcommand("capture")) {
        return capture;
    }
    if (program.got_subcommand("collectors")) {
        return TCollectorsOptions{};
    }
    return snapshot;
}

}  // namespace NVORHOST
