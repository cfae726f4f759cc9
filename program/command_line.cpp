#include "program/command_line.h"

#include "commandline/completion_script.h"
#include "commandline/help_format.h"
#include "commandline/nearest_word.h"
#include "commandline/usage_check.h"
#include "inventory/model/resource_type.h"
#include "program/diff_command.h"
#include "program/sending_run.h"
#include "program/show_command.h"
#include "sending/url_template.h"
#include "text/lines.h"
#include "text/numbers.h"
#include "text/shown_text.h"
#include "vorhost/upload/entity_service.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <iostream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
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

EReachability ParseReachability(const std::string& text) {
    const auto* const row = std::ranges::find(reachabilityNames, text, &TReachabilityName::name);
    if (row == std::end(reachabilityNames)) {
        throw CLI::ValidationError("--reachability", "'" + text + "' is not one of network, yes, no");
    }
    return row->reachability;
}

TCIMDateTime ParseLocalTime(const std::string& text) {
    const auto time = TCIMDateTime::FromText(text);
    if (!time || time->IsInterval()) {
        throw CLI::ValidationError("--local-time", "'" + text +
                                                       "' is not a valid CIM date-time such as "
                                                       "20240229134500.000000+060");
    }
    return *time;
}

std::vector<std::string> CollectorNames() {
    std::vector<std::string> names;
    for (const TCollector& collector : GetCollectors()) {
        names.emplace_back(collector.name);
    }
    return names;
}

std::vector<std::string> ResourceTypes() {
    std::set<std::string> types;
    for (const NINVENTORY::TResourceType& row : NINVENTORY::GetResourceTypes()) {
        types.emplace(row.type);
    }
    return {types.begin(), types.end()};
}

std::string JoinWith(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : separator) + word;
    }
    return text;
}

std::string Join(const std::vector<std::string>& words) {
    return JoinWith(words, ", ");
}

std::vector<NINVENTORY::TCondition> ParseConditions(const std::vector<std::string>& texts) {
    std::vector<NINVENTORY::TCondition> conditions;
    for (const std::string& text : texts) {
        try {
            conditions.push_back(NINVENTORY::ParseCondition(text));
        } catch (const std::invalid_argument& error) {
            throw CLI::ValidationError("--where", error.what());
        }
    }
    return conditions;
}

void RequireCollector(const std::string& option, const std::string& name) {
    const auto known = CollectorNames();
    if (std::ranges::find(known, name) == known.end()) {
        const std::string guess = DidYouMean(name, known);
        throw CLI::ValidationError(option, "unknown collector '" + name + "'" +
                                               (guess.empty() ? "; known are " + Join(known) : guess));
    }
}

// The message does not contain the URL, which may contain a password.
std::string ParseEntityService(const std::string& url) {
    if (const auto fault = FindEntityServiceFault(url)) {
        throw CLI::ValidationError("--entity-service", "the URL cannot be used: " + *fault);
    }
    return url;
}

// More than a day is probably a mistake in units.
std::chrono::milliseconds ParseSeconds(const std::string& option, const std::string& text) {
    constexpr double maxSeconds = 86400;
    double seconds = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc() || end != text.data() + text.size() ||
        !(seconds >= 0 && seconds <= maxSeconds)) {
        throw CLI::ValidationError(option, "'" + text + "' is not a number of seconds from 0 to 86400");
    }
    return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

// Returns nullopt, no deadline, for 0.
std::optional<std::chrono::milliseconds> ParseDeadline(const std::string& text) {
    const auto duration = ParseSeconds("--deadline", text);
    return duration.count() == 0 ? std::nullopt : std::optional(duration);
}

// Splits "NAME,NAME" and requires that each is the name of a collector.
std::vector<std::string> ParseCollectorNames(const std::string& option, const std::string& list) {
    std::vector<std::string> names;
    std::istringstream words(list);
    for (std::string name; std::getline(words, name, ',');) {
        RequireCollector(option, name);
        names.push_back(name);
    }
    return names;
}

CLI::Option* AddCollectorNames(CLI::App& command, const std::string& option, std::vector<std::string>& names,
                               const std::string& description) {
    return command
        .add_option_function<std::string>(
            option, [option, &names](const std::string& text) { names = ParseCollectorNames(option, text); },
            description)
        ->join(',')
        ->type_name("NAME,...");
}

CLI::Option* AddSysroot(CLI::App& command, TMachineOptions& options) {
    return command
        .add_option("--sysroot", options.sysroot, "Collect from the tree below this directory instead of /")
        ->type_name("DIR");
}

CLI::Option* AddDeadline(CLI::App& command, TMachineOptions& options) {
    return command
        .add_option_function<std::string>(
            "--deadline", [&options](const std::string& text) { options.deadline = ParseDeadline(text); },
            "Continue without sources that have not answered after this time; 0 waits for all of them "
            "(default: 10)")
        ->type_name("SECONDS");
}

CLI::Option* AddWake(CLI::App& command, TMachineOptions& options) {
    return command.add_flag("--wake", options.wakes,
                            "Also read the files of sleeping devices, which wakes the devices");
}

// The options of every command that collects an inventory from a machine.
std::vector<CLI::Option*> AddMachineOptions(CLI::App& command, TSourceOptions& options) {
    return {
        AddSysroot(command, options.machine),
        AddCollectorNames(command, "--only", options.machine.collectors.only,
                          "Run only these collectors; noxinfo collectors lists them"),
        AddCollectorNames(command, "--skip", options.machine.collectors.skip,
                          "Run every collector except these"),
        command.add_flag("--with-processes", options.machine.collectors.withProcesses,
                         "Also collect the running processes"),
        command
            .add_flag("--documents-only", options.machine.collectors.documentsOnly,
                      "Leave out what no document contains")
            ->excludes("--only"),
        AddDeadline(command, options.machine),
        AddWake(command, options.machine),
    };
}

void AddRunOptions(CLI::App& command, TSourceOptions& options) {
    command
        .add_option_function<std::string>(
            "--local-time",
            [&options](const std::string& text) { options.machine.localTime = ParseLocalTime(text); },
            "Use this local time instead of the clock: yyyymmddhhmmss.mmmmmm and the offset from UTC in "
            "minutes, as +060")
        ->type_name("CIMDATETIME");
    command
        .add_option("--log-file", options.log.file, "Append every log line, as LEVEL MESSAGE, to this file")
        ->type_name("FILE");
    command.add_flag("--strict", options.isStrict,
                     "Exit with status 3 when a source could not be read, was denied or did not answer");
    command.add_flag("--verbose", options.log.verbose, "Print debug and warning lines to standard error");
    command.add_flag_callback(
        "--no-sync", [&options] { options.syncs = false; }, "Do not wait until the files are on disk");
}

// --namespace replaces the machine, so it excludes the options of the machine.
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

// Splits "A,B"; the names are not checked, because an inventory may come from another version.
CLI::Option* AddNames(CLI::App& command, const std::string& option, std::vector<std::string>& names,
                      const std::string& description, const std::string& typeName) {
    return command.add_option(option, names, description)
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name(typeName);
}

constexpr char sourceDescription[] =
    "Document, saved namespace or result, a folder that holds one, or the tree of a captured machine; - is "
    "standard input";

// Adds the inventories to read. The options of the machine exclude them.
CLI::Option* AddSources(CLI::App& command, std::vector<std::string>& sources,
                        const std::vector<CLI::Option*>& machine) {
    CLI::Option* const option =
        command.add_option("SOURCE", sources, std::string(sourceDescription) + " (default: this machine)")
            ->type_name("FILE");
    for (CLI::Option* each : machine) {
        each->excludes(option);
    }
    return option;
}

// The name of the type lists the choices already.
constexpr char noDescription[] = "";

void AddShowCommand(CLI::App& program, TShowOptions& options) {
    CLI::App& command =
        *program.add_subcommand("show", "Show this machine, or inventories that were collected before");
    const std::vector<CLI::Option*> machine = AddMachineOptions(command, options.machine);
    AddRunOptions(command, options.machine);
    command.add_option("--format", options.format, "Format of the output (default: text)")
        ->check(CLI::IsMember(ListShowFormats()).description(noDescription))
        ->type_name(JoinWith(ListShowFormats(), "|"));
    AddNames(command, "--type", options.filter.types, "Show only resources of these types", "TYPE,...");
    AddNames(command, "--property", options.filter.properties, "Show only these properties", "PROPERTY,...");
    command
        .add_option_function<std::vector<std::string>>(
            "--where",
            [&options](const std::vector<std::string>& texts) {
                options.filter.conditions = ParseConditions(texts);
            },
            "Show only resources with this value, or with a match of this regular expression (~); may be "
            "given "
            "several times")
        ->allow_extra_args(false)
        ->type_name("PROPERTY=VALUE");
    command.add_flag("--long", options.isLong, "Text: show every property");
    command.add_flag("--sources", options.hasSources,
                     "Text, JSON and NDJSON: show where each property comes from, or why it has no value");
    command.add_option("--output", options.outputFile, "Write to this file instead of standard output")
        ->type_name("FILE");
    AddSources(command, options.sources, machine);
}

void AddReportCommand(CLI::App& program, TReportOptions& options) {
    CLI::App& command = *program.add_subcommand("report", "Write a page for browsers about an inventory");
    const std::vector<CLI::Option*> machine = AddMachineOptions(command, options.machine);
    AddRunOptions(command, options.machine);
    command.add_option("--output", options.outputFile, "HTML file to write; - is standard output")
        ->type_name("FILE")
        ->required();
    constexpr int oldAndNew = 2;
    AddSources(command, options.sources, machine)->expected(0, oldAndNew);
}

void AddValidateCommand(CLI::App& program, TValidateOptions& options) {
    CLI::App& command = *program.add_subcommand("validate", "Check inventory documents");
    command
        .add_option_function<std::string>(
            "--format", [&options](const std::string& format) { options.isJson = format == "json"; },
            "Format of the output (default: text)")
        ->check(CLI::IsMember(std::vector<std::string>{"text", "json"}).description(noDescription))
        ->type_name("text|json");
    command
        .add_option("SOURCE", options.sources, "Document, or a folder that holds one; - is standard input")
        ->type_name("FILE")
        ->required();
}

std::vector<std::string> CheckNames() {
    std::vector<std::string> names;
    for (const NLINT::TCheckText& check : NLINT::GetCheckTexts()) {
        names.emplace_back(check.id);
    }
    return names;
}

CLI::Option* AddCheckNames(CLI::App& command, const std::string& option, std::vector<std::string>& names,
                           const std::string& description) {
    return AddNames(command, option, names, description, "CHECK,...")
        ->check([option](const std::string& name) {
            const auto known = CheckNames();
            return std::ranges::find(known, name) != known.end()
                       ? std::string()
                       : "unknown check '" + name + "'" + DidYouMean(name, known);
        });
}

struct TSeverityName {
    std::string_view name;
    NLINT::ESeverity severity;
};

constexpr TSeverityName severityNames[] = {
    {"error", NLINT::ESeverity::error},
    {"warning", NLINT::ESeverity::warning},
    {"note", NLINT::ESeverity::note},
};

void AddLintCommand(CLI::App& program, TLintOptions& options) {
    CLI::App& command = *program.add_subcommand(
        "lint", "Look for contradictions, and for parts that are not as they could be");
    TMachineOptions& machine = options.machine.machine;
    const std::vector<CLI::Option*> door{AddSysroot(command, machine), AddDeadline(command, machine),
                                         AddWake(command, machine)};
    command
        .add_option_function<std::string>(
            "--format", [&options](const std::string& format) { options.isJson = format == "json"; },
            "Format of the output (default: text)")
        ->check(CLI::IsMember(std::vector<std::string>{"text", "json"}).description(noDescription))
        ->type_name("text|json");
    AddCheckNames(command, "--only", options.checks.only, "Run only these checks");
    AddCheckNames(command, "--skip", options.checks.skip, "Run every check except these");
    command
        .add_option_function<std::string>(
            "--fail-on",
            [&options](const std::string& name) {
                options.failOn = std::ranges::find(severityNames, name, &TSeverityName::name)->severity;
            },
            "Exit with status 1 for findings of this severity and above (default: warning)")
        ->check(
            CLI::IsMember(std::vector<std::string>{"error", "warning", "note"}).description(noDescription))
        ->type_name("error|warning|note");
    AddRunOptions(command, options.machine);
    CLI::Option* const source =
        command
            .add_option("SOURCE", options.source, std::string(sourceDescription) + " (default: this machine)")
            ->type_name("FILE");
    for (CLI::Option* option : door) {
        option->excludes(source);
    }
}

void AddExplainCommand(CLI::App& program, TExplainOptions& options) {
    CLI::App& command = *program.add_subcommand(
        "explain", "Explain where the identifier and the values of a resource come from");
    const std::vector<CLI::Option*> machine = AddMachineOptions(command, options.machine);
    AddRunOptions(command, options.machine);
    command
        .add_option("RESOURCE", options.resource,
                    "Identifier, its first digits (at least four), or the name of a resource")
        ->type_name("RESOURCE")
        ->required();
    CLI::Option* const source =
        command
            .add_option("SOURCE", options.source, std::string(sourceDescription) + " (default: this machine)")
            ->type_name("FILE");
    for (CLI::Option* option : machine) {
        option->excludes(source);
    }
}

std::vector<NINVENTORY::TIgnored> ParseIgnored(const std::vector<std::string>& texts) {
    std::vector<NINVENTORY::TIgnored> ignored;
    for (const std::string& text : texts) {
        const auto [type, property] = SplitAt(text, '.');
        if (type.empty() || text.ends_with('.')) {
            throw CLI::ValidationError("--ignore", "'" + text + "' is not TYPE or TYPE.PROPERTY");
        }
        ignored.push_back({std::string(type), std::string(property)});
    }
    return ignored;
}

void AddDiffCommand(CLI::App& program, TDiffOptions& options) {
    CLI::App& command = *program.add_subcommand("diff", "Show what differs between two inventories");
    const std::vector<CLI::Option*> machine = AddMachineOptions(command, options.machine);
    AddRunOptions(command, options.machine);
    command.add_option("--format", options.format, "Format of the output (default: text)")
        ->check(CLI::IsMember(ListDiffFormats()).description(noDescription))
        ->type_name(JoinWith(ListDiffFormats(), "|"));
    command
        .add_option_function<std::vector<std::string>>(
            "--ignore",
            [&options](const std::vector<std::string>& texts) {
                options.settings.ignored = ParseIgnored(texts);
            },
            "Do not compare resources of this type, or this property of theirs; may be given several times")
        ->allow_extra_args(false)
        ->type_name("TYPE[.PROPERTY]");
    command.add_flag("--all", options.settings.comparesAll,
                     "Also compare what changes by itself, and what only one of the inventories can contain");
    command.add_option("--output", options.outputFile, "Write to this file instead of standard output")
        ->type_name("FILE");
    command.add_option("OLD", options.before, sourceDescription)->type_name("FILE")->required();
    CLI::Option* const after =
        command.add_option("NEW", options.after, std::string(sourceDescription) + " (default: this machine)")
            ->type_name("FILE");
    for (CLI::Option* option : machine) {
        option->excludes(after);
    }
}

std::size_t ParseKeptRuns(const std::string& text) {
    constexpr std::size_t maxRuns = 1'000'000;
    const auto number = ParseNumber<std::size_t>(text);
    if (!number || *number == 0 || *number > maxRuns) {
        throw CLI::ValidationError("--keep", "'" + text + "' is not a number from 1 to 1000000");
    }
    return *number;
}

// The message does not contain the URL, which may contain a password.
std::string ParseUrlTemplate(std::string text) {
    try {
        return TUrlTemplate(std::move(text)).GetText();
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--send", std::string("the URL cannot be used: ") + error.what());
    }
}

std::uintmax_t ParseMebibytes(const std::string& text) {
    constexpr std::uint64_t most = 1'048'576;
    const auto number = ParseNumber<std::uint64_t>(text);
    if (!number || *number == 0 || *number > most) {
        throw CLI::ValidationError("--spool-limit",
                                   "'" + text + "' is not a number of MiB from 1 to 1048576");
    }
    return *number;
}

CLI::Option* AddFile(CLI::App& command, const std::string& option, std::optional<std::string>& file,
                     const std::string& description) {
    return command.add_option(option, file, description)->type_name("FILE");
}

// Adds the option --send and returns the others.
std::vector<CLI::Option*> AddSendingOptions(CLI::App& command, TSendingOptions& options,
                                            const std::string& description) {
    command
        .add_option_function<std::string>(
            "--send", [&options](const std::string& url) { options.url = ParseUrlTemplate(url); },
            description)
        ->type_name("URL");
    command.callback([&options] {
        const auto fault = options.url ? FindUrlFault(TUrlTemplate(*options.url), options) : std::nullopt;
        if (fault) {
            throw CLI::ValidationError("--send", "the URL cannot be used: " + *fault);
        }
    });
    return {
        AddFile(command, "--send-certificate", options.credentials.certificate,
                "Certificate that this machine presents to the server, as PEM"),
        AddFile(command, "--send-key", options.credentials.key,
                "Private key of the certificate, as PEM (default: in the file of the certificate)"),
        AddFile(command, "--send-ca", options.credentials.authorities,
                "Accept only servers whose certificate one of these certificates has signed, as PEM "
                "(default: those of the system)"),
        AddFile(command, "--send-token-file", options.credentials.token,
                "Send the token in this file, which others cannot read, with each request"),
        command.add_flag("--send-http", options.allowsHttp,
                         "Also send without TLS to other machines, where everyone on the way can read it"),
        command
            .add_option_function<std::string>(
                "--send-time",
                [&options](const std::string& text) { options.limit = ParseSeconds("--send-time", text); },
                "Try to send for at most this time (default: 120)")
            ->type_name("SECONDS"),
        command
            .add_option_function<std::string>(
                "--spool-limit",
                [&options](const std::string& text) { options.spoolLimitMiB = ParseMebibytes(text); },
                "Drop the oldest waiting runs if all together are larger than this (default: 64)")
            ->type_name("MIB"),
    };
}

void AddSendCommand(CLI::App& program, TSendOptions& options) {
    CLI::App& command = *program.add_subcommand("send", "Send the files of earlier runs that wait for it");
    AddSendingOptions(command, options.sending,
                      "Send to this URL (default: the one for which the runs were collected)");
    command
        .add_option("DIR", options.sending.spool,
                    "Directory with the waiting runs (default: that of collect)")
        ->type_name("DIR");
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
            [&options](const std::string& text) { options.reachability = ParseReachability(text); },
            "Whether the maker's web server counts as reachable: network (try a connection), yes, no "
            "(default: network with a customer identity, yes without one)")
        ->type_name("network|yes|no");
    command
        .add_option_function<std::string>(
            "--entity-service",
            [&options](const std::string& url) { options.entityService = ParseEntityService(url); },
            "Request the credential from this service, an http or https URL, instead of deriving it")
        ->type_name("URL");
    command
        .add_option("--plugin", options.pluginFile,
                    "Plug-in to run (default: the one installed with this program)")
        ->type_name("FILE");
    command.add_flag("--isolate", options.isolates,
                     "Run the plug-in in a separate process, so that a crash is reported as a failed run");
    CLI::Option* const result =
        command
            .add_option("--result", options.resultFile, "Write the result instances to this file, as CIM-XML")
            ->type_name("FILE");
    CLI::Option* const snapshot =
        command
            .add_option("--snapshot", options.snapshotFile,
                        "Also save the namespace of the documents to this file, as noxinfo snapshot does")
            ->type_name("FILE");
    command
        .add_option_function<std::string>(
            "--keep", [&options](const std::string& text) { options.keptRuns = ParseKeptRuns(text); },
            "Write the documents and a compressed snapshot to a new directory, named by the time, in the "
            "target directory, and keep only the last of these directories")
        ->excludes(result)
        ->excludes(snapshot)
        ->type_name("NUMBER");
    auto sending =
        AddSendingOptions(command, options.sending,
                          "Send documents, compressed snapshot and result to this URL by HTTP PUT; "
                          "%{machine}, %{host}, %{date} and %{time} are replaced");
    sending.push_back(
        command
            .add_option("--spool", options.sending.spool,
                        "Directory for files that wait to be sent (default: below the state directory)")
            ->type_name("DIR"));
    for (CLI::Option* option : sending) {
        option->needs("--send");
    }
}

void AddSnapshotCommand(CLI::App& program, TSnapshotOptions& options) {
    CLI::App& command = *program.add_subcommand("snapshot", "Save the whole namespace as CIM-XML");
    AddSourceOptions(command, options.source);
    command.add_flag("--with-sources", options.hasSources,
                     "Also save where each property comes from, or why it has no value");
    command
        .add_option("FILE", options.file,
                    "File to write, compressed if its name ends in .gz; - is standard output")

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
    command.add_option("FILE", options.file, "Archive to write, FILE.tar.xz; - is standard output")
        ->type_name("FILE")
        ->required();
}

void AddRedactCommand(CLI::App& program, TRedactOptions& options) {
    CLI::App& command = *program.add_subcommand(
        "redact", "Replace what identifies machines and people in inventories by pseudonyms");
    command.add_option("--output", options.directory, "Directory for the redacted files")
        ->type_name("DIR")
        ->required();
    command
        .add_option("--key-file", options.keyFile,
                    "Key of the pseudonyms, made if it does not exist (default: a key that is not kept)")
        ->type_name("FILE");
    command
        .add_option("SOURCE", options.sources,
                    "Document, saved namespace, result or capture, or a directory that holds some")
        ->type_name("FILE")
        ->required();
}

// The commands and options, and the variables that receive their values.
struct TModel {
    TModel() {
        program.formatter(std::make_shared<THelpFormat>());
        program.require_subcommand(1);
        program.set_version_flag("--version", versionText, "Print the version and exit");
        AddShowCommand(program, show);
        AddValidateCommand(program, validate);
        AddExplainCommand(program, explain);
        AddLintCommand(program, lint);
        AddReportCommand(program, report);
        AddDiffCommand(program, diff);
        AddCollectCommand(program, collect);
        AddSendCommand(program, send);
        AddSnapshotCommand(program, snapshot);
        AddCaptureCommand(program, capture);
        AddRedactCommand(program, redact);
        AddWordCommands();
    }

    CLI::App program{"Hardware inventory of a Linux machine.", "noxinfo"};
    TShowOptions show;
    TValidateOptions validate;
    TExplainOptions explain;
    TLintOptions lint;
    TReportOptions report;
    TDiffOptions diff;
    TCollectOptions collect;
    TSendOptions send;
    TSnapshotOptions snapshot;
    TCaptureOptions capture;
    TRedactOptions redact;
    TCompletionOptions completion;
    std::string helpTopic;

    static constexpr char versionText[] = "noxinfo " NOXINFO_VERSION;

  private:
    void AddWordCommands() {
        program.add_subcommand("fleet", "Keep the inventories of many machines, and ask about them")
            ->prefix_command();
        program.add_subcommand("collectors", "List the collectors with their classes and sources");
        program.add_subcommand("completion", "Print the completion script of a shell")
            ->add_option("SHELL", completion.shell, "Shell that the script is for (default: bash)")
            ->check(CLI::IsMember(ListShells()).description(noDescription))
            ->type_name(JoinWith(ListShells(), "|"));
        program.add_subcommand("help", "Print this help, or the help of a command")
            ->add_option("COMMAND", helpTopic, "Command to describe")
            ->type_name("COMMAND");
        program.add_subcommand("version", "Print the version");
        for (CLI::App* command : program.get_subcommands({})) {
            command->group("Commands");
        }
        for (CLI::App* command : program.get_subcommands({})) {
            command->set_help_flag("-h,--help", "Print this help and exit");
        }
        program.set_help_flag("-h,--help", "Print this help and exit");
    }
};

using TWords = std::vector<std::string>;

// Returns the words for noxinfo-fleet, if the command line is one for it.
std::optional<TFleetWords> FindFleetWords(const TWords& words) {
    constexpr char command[] = "fleet";
    if (words.size() == 2 && words.front() == "help" && words.back() == command) {
        return TFleetWords{{"--help"}};
    }
    return !words.empty() && words.front() == command
               ? std::optional(TFleetWords{TWords(words.begin() + 1, words.end())})
               : std::nullopt;
}

std::string HelpCommandFor(const CLI::App* command) {
    return command == nullptr || command->get_name() == "help" ? "noxinfo --help"
                                                               : "noxinfo " + command->get_name() + " --help";
}

void Parse(CLI::App& program, TWords words) {
    if (words.empty()) {
        words = {"show"};
    }
    CheckWords(program, words);
    words = WithoutHelpCommand(program, std::move(words));
    CheckWords(program, words);
    std::ranges::reverse(words);  // CLI11 expects the words in reverse order
    program.parse(std::move(words));
}

}  // namespace

void WriteCompletion(const TCompletionOptions& options, std::ostream& out) {
    TCompletionTable table = MakeCompletionTable(TModel().program);
    table.lists = {{"collectors", CollectorNames()}, {"types", ResourceTypes()}, {"checks", CheckNames()}};
    WriteCompletionScript(table, options.shell, out);
}

TCommand ParseCommandLine(int argc, const char* const* argv) {
    const TWords words(argv + std::min(argc, 1), argv + argc);
    if (auto fleet = FindFleetWords(words)) {
        return *std::move(fleet);
    }
    TModel model;
    try {
        Parse(model.program, words);
    } catch (const CLI::Success& request) {
        return TEarlyExit{model.program.exit(request)};
    } catch (const CLI::ParseError& error) {
        std::cerr << "noxinfo: " << ToShownText(error.what()) << "\nTry '"
                  << HelpCommandFor(FindCommand(model.program, words)) << "'.\n";
        return TEarlyExit{eExitUsage};
    }
    const std::string command = model.program.get_subcommands().front()->get_name();
    if (command == "show") {
        return model.show;
    }
    if (command == "validate") {
        return model.validate;
    }
    if (command == "explain") {
        return model.explain;
    }
    if (command == "lint") {
        return model.lint;
    }
    if (command == "report") {
        return model.report;
    }
    if (command == "diff") {
        return model.diff;
    }
    if (command == "collect") {
        return model.collect;
    }
    if (command == "send") {
        return model.send;
    }
    if (command == "snapshot") {
        return model.snapshot;
    }
    if (command == "capture") {
        return model.capture;
    }
    if (command == "redact") {
        return model.redact;
    }
    if (command == "collectors") {
        return TCollectorsOptions{};
    }
    if (command == "completion") {
        return model.completion;
    }
    std::cout << TModel::versionText << '\n';
    return TEarlyExit{eExitDone};
}

}  // namespace NVORHOST
