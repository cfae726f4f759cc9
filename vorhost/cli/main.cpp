// Entry point of vorhost: chooses the command and turns failures into one line and an exit status.

#include "vorhost/cli/capture_command.h"
#include "vorhost/cli/collect_command.h"
#include "vorhost/cli/collectors_command.h"
#include "vorhost/cli/command_line.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/cli/snapshot_command.h"

#include <exception>
#include <iostream>
#include <variant>

namespace {

using namespace NVORHOST;  // NOLINT(google-build-using-namespace): this unit is that namespace's program

struct TRunCommand {
    int operator()(const TCollectOptions& options) const {
        RunCollect(options, std::cout);
        return eExitDone;
    }
    int operator()(const TSnapshotOptions& options) const {
        RunSnapshot(options);
        return eExitDone;
    }
    int operator()(const TCaptureOptions& options) const {
        RunCapture(options, std::cout);
        return eExitDone;
    }
    int operator()(const TCollectorsOptions&) const {
        ListCollectors(std::cout);
        return eExitDone;
    }
    int operator()(const TEarlyExit& exit) const { return exit.status; }
};

}  // namespace

int main(int argc, char** argv) {
    try {
        return std::visit(TRunCommand{}, ParseCommandLine(argc, argv));
    } catch (const std::bad_alloc&) {
        std::cerr << "vorhost: out of memory\n";
    } catch (const std::exception& error) {
        std::cerr << "vorhost: " << error.what() << '\n';
    }
    return eExitFailed;
}
