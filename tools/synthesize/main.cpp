// Makes the inventories of a made-up fleet:
//
//   synthesize [--snapshots] [--processes NUMBER] DESCRIPTION DIR
#include "os/module.h"
#include "text/numbers.h"
#include "tools/synthesize/inventory_maker.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace NSYNTHESIS;

struct TOptions {
    bool hasSnapshots = false;
    std::uint64_t processes = 1;
    std::string description;
    std::filesystem::path folder;
};

// Returns nullopt for a malformed command line.
std::optional<TOptions> ParseArguments(const std::vector<std::string>& words) {
    TOptions options;
    std::vector<std::string> names;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--snapshots") {
            options.hasSnapshots = true;
        } else if (*word == "--processes" && word + 1 != words.end()) {
            options.processes = NVORHOST::ParseNumber<std::uint64_t>(*++word).value_or(0);
        } else {
            names.push_back(*word);
        }
    }
    constexpr std::uint64_t maxProcesses = 64;
    if (names.size() != 2 || options.processes == 0 || options.processes > maxProcesses) {
        return std::nullopt;
    }
    options.description = names[0];
    options.folder = std::filesystem::absolute(names[1]);
    return options;
}

TFleetDescription ReadDescription(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return ParseFleetDescription(std::string(std::istreambuf_iterator<char>(file), {}));
}

// Makes the inventories of every `processes`-th machine, beginning with machine `first`.
void MakeInventories(const TFleetDescription& fleet, const TOptions& options, std::uint64_t first) {
    TInventoryMaker maker(NVORHOST::FindBesideProgram(NOXINFO_PLUGIN_FROM_BIN "/libnoxinfo.pi.so"));
    TFleetHistory history(fleet);
    for (;; history.GoToNextDay()) {
        for (std::uint64_t i = first; i < fleet.machines; i += options.processes) {
            maker.Write(fleet, history.GetMachines()[i], history.GetDay(), options.hasSnapshots,
                        options.folder);
        }
        if (history.GetDay() == fleet.days) {
            return;
        }
    }
}

int Run(const TFleetDescription& fleet, const TOptions& options, std::uint64_t first) {
    try {
        MakeInventories(fleet, options, first);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "synthesize: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}

// The host's services are process-wide, so machines are shared out among processes and not threads.
int RunAll(const TFleetDescription& fleet, const TOptions& options) {
    std::vector<pid_t> children;
    for (std::uint64_t i = 1; i < options.processes; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(Run(fleet, options, i));
        }
        children.push_back(child);
    }
    int status = Run(fleet, options, 0);
    for (const pid_t child : children) {
        int end = -1;
        if (child < 0 || ::waitpid(child, &end, 0) != child || end != 0) {
            status = EXIT_FAILURE;
        }
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = ParseArguments({argv + 1, argv + argc});
    if (!options) {
        std::cerr << "usage: synthesize [--snapshots] [--processes NUMBER] DESCRIPTION DIR\n";
        return 2;
    }
    try {
        return RunAll(ReadDescription(options->description), *options);
    } catch (const std::exception& error) {
        std::cerr << "synthesize: " << options->description << ": " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
