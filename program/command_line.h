// Parses the command line of noxinfo into plain structures.
#pragma once

#include "inventory/compare/comparison.h"
#include "inventory/read/resource_filter.h"
#include "lint/run/check_list.h"
#include "machine/supervision/machine_options.h"
#include "sending/credential_files.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/services/host_settings.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace NVORHOST {

/// The options that all commands have: the source of the namespace, and the log.
struct TSourceOptions {
    std::optional<std::string> namespaceFile;  ///< CIM-XML file to load; absent: collect from the machine
    TMachineOptions machine;
    bool isStrict = false;  ///< gaps in the collection make the exit status 3
    TLogOptions log;
    bool syncs = true;  ///< sync files to disk before they replace earlier ones
};

/// The options of the commands that send.
struct TSendingOptions {
    std::optional<std::string> url;  ///< template; absent: collect sends nothing, send uses that of the runs
    TCredentialFiles credentials;
    bool allowsHttp = false;                                      ///< http without TLS to other machines
    std::chrono::milliseconds limit = std::chrono::seconds(120);  ///< of all attempts together
    std::optional<std::string> spool;                             ///< directory; absent: the default one
    std::uintmax_t spoolLimitMiB = 64;
};

struct TCollectOptions {
    TSourceOptions source;
    TSendingOptions sending;
    std::string directory = ".";
    std::optional<std::string> kelId;           ///< absent: environment variable ZETKELID
    std::optional<EReachability> reachability;  ///< absent: `network` with an identity, otherwise `yes`
    std::optional<std::string> entityService;   ///< URL; absent: credentials are derived locally
    std::optional<std::string> pluginFile;      ///< absent: the plug-in installed with this program
    std::optional<std::string> resultFile;      ///< absent: the results are not saved
    std::optional<std::string> snapshotFile;    ///< absent: the namespace is not saved
    std::optional<std::size_t> keptRuns;        ///< directories of runs to keep; absent: files in `directory`
    bool isolates = false;                      ///< run the plug-in in a separate process
};

struct TSnapshotOptions {
    TSourceOptions source;
    std::string file;         ///< "-" is standard output
    bool hasSources = false;  ///< keep where each value comes from, or why there is none
};

struct TCaptureOptions {
    TSourceOptions source;  ///< without namespaceFile
    std::string file;       ///< "-" is standard output
    bool redacts = false;   ///< replace identities by pseudonyms
};

struct TShowOptions {
    TSourceOptions machine;            ///< without namespaceFile; used if there are no sources
    std::vector<std::string> sources;  ///< files and folders; "-" is standard input
    std::string format = "text";
    NINVENTORY::TFilterSettings filter;
    bool isLong = false;                    ///< text: every property
    bool hasSources = false;                ///< where each value comes from, or why there is none
    bool comparesSources = false;           ///< html: show what changed from the first source to the last
    std::optional<std::string> outputFile;  ///< absent: standard output
};

struct TSendOptions {
    TSendingOptions sending;
};

struct TValidateOptions {
    std::vector<std::string> sources;
    bool isJson = false;
};

struct TExplainOptions {
    TSourceOptions machine;             ///< without namespaceFile; used if there is no source
    std::string resource;               ///< identifier, its first digits, or name
    std::optional<std::string> source;  ///< file or folder; "-" is standard input
};

struct TLintOptions {
    TSourceOptions machine;             ///< without namespaceFile; used if there is no source
    std::optional<std::string> source;  ///< file or folder; "-" is standard input
    NLINT::TCheckChoice checks;
    NLINT::ESeverity failOn = NLINT::ESeverity::warning;  ///< the least severity that makes the exit status 1
    bool isJson = false;
};

struct TRedactOptions {
    std::vector<std::string> sources;    ///< files and directories
    std::string directory;               ///< output directory
    std::optional<std::string> keyFile;  ///< absent: a key that is not kept
};

struct TReportOptions {
    TSourceOptions machine;            ///< without namespaceFile; used if there are no sources
    std::vector<std::string> sources;  ///< at most two, the older one first; "-" is standard input
    std::string outputFile;            ///< "-" is standard output
};

struct TDiffOptions {
    TSourceOptions machine;            ///< without namespaceFile; used if there is no `after`
    std::string before;                ///< file or folder; "-" is standard input
    std::optional<std::string> after;  ///< as `before`; only one of them may be standard input
    std::string format = "text";
    NINVENTORY::TComparisonSettings settings;
    std::optional<std::string> outputFile;  ///< absent: standard output
};

/// `noxinfo collectors`, which has no options.
struct TCollectorsOptions {};

struct TCompletionOptions {
    std::string shell = "bash";
};

/// The words after `noxinfo fleet`, which another program takes.
struct TFleetWords {
    std::vector<std::string> words;
};

/// The program must end without running a command.
struct TEarlyExit {
    int status = eExitDone;
};

using TCommand =
    std::variant<TShowOptions, TDiffOptions, TValidateOptions, TExplainOptions, TLintOptions, TRedactOptions,
                 TReportOptions, TCollectOptions, TSendOptions, TSnapshotOptions, TCaptureOptions,
                 TCollectorsOptions, TCompletionOptions, TFleetWords, TEarlyExit>;

/// Parses the command line. Prints help or version to standard output, and usage errors to standard error;
/// returns TEarlyExit in both cases.
TCommand ParseCommandLine(int argc, const char* const* argv);

/// Prints the completion script of a shell for the options that ParseCommandLine accepts.
void WriteCompletion(const TCompletionOptions& options, std::ostream& out);

}  // namespace NVORHOST
