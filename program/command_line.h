// The command line of noxinfo: what a user may ask for, read into plain structures.
#pragma once

#include "machine/supervision/machine_options.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/services/host_settings.h"

#include <optional>
#include <ostream>
#include <string>
#include <variant>

namespace NVORHOST {

/// Where the namespace comes from and where log lines go: common to all commands.
struct TSourceOptions {
    std::string namespaceFile;  ///< CIM-XML file instead of the machine; empty: not given
    TMachineOptions machine;
    bool isStrict = false;  ///< sources that could not be read make the exit status 3
    TLogOptions log;
    bool syncs = true;  ///< files are on the disk before they replace earlier ones
};

struct TCollectOptions {
    TSourceOptions source;
    std::string directory = ".";
    std::optional<std::string> kelId;           ///< absent: what the environment says
    std::optional<EReachability> reachability;  ///< absent: the network with an identity, else `yes`
    std::string entityService;                  ///< URL; empty: none
    std::string pluginFile;                     ///< empty: the one that belongs to this program
    std::string resultFile;                     ///< empty: not given
    bool isolates = false;                      ///< the plug-in runs in a process of its own
};

struct TSnapshotOptions {
    TSourceOptions source;
    std::string file;  ///< "-" is standard output
};

struct TCaptureOptions {
    TSourceOptions source;  ///< never a namespace file
    std::string file;       ///< "-" is standard output
    bool redacts = false;   ///< what identifies the machine is replaced
};

/// List the collectors.
struct TCollectorsOptions {};

/// Print the completion of bash.
struct TCompletionOptions {};

/// The program is to end at once, without running a command.
struct TEarlyExit {
    int status = eExitDone;
};

using TCommand = std::variant<TCollectOptions, TSnapshotOptions, TCaptureOptions, TCollectorsOptions,
                              TCompletionOptions, TEarlyExit>;

/// Reads the command line. Prints help and version to standard output, and what is wrong, with a hint, to
/// standard error; both come back as TEarlyExit.
TCommand ParseCommandLine(int argc, const char* const* argv);

/// Prints the completion of bash, made of the same options.
void WriteCompletion(std::ostream& out);

}  // namespace NVORHOST
