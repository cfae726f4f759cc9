// Entry point of noxinfo: runs the command and turns failures into one line and an exit status.

#include "machine/supervision/machine_door.h"
#include "program/capture_command.h"
#include "program/collect_command.h"
#include "program/collectors_command.h"
#include "program/command_line.h"
#include "program/diff_command.h"
#include "program/explain_command.h"
#include "program/fleet_command.h"
#include "program/lint_command.h"
#include "program/redact_command.h"
#include "program/report_command.h"
#include "program/send_command.h"
#include "program/show_command.h"
#include "program/snapshot_command.h"
#include "program/validate_command.h"
#include "text/shown_text.h"
#include "vorhost/run/interruption.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <variant>

namespace {

using namespace NVORHOST;  // NOLINT(google-build-using-namespace): this unit is that namespace's program

void Report(const std::string& failure) {
    BlockIfSignalled();
    std::cerr << "noxinfo: " << ToShownText(failure) << '\n';
}

struct TRunCommand {
    int operator()(const TShowOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunShow(options, out); });
    }
    int operator()(const TValidateOptions& options) const {
        int status = eExitDone;
        WriteStandardOutput([&](std::ostream& out) { status = RunValidate(options, out); });
        return status;
    }
    int operator()(const TExplainOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunExplain(options, out); });
    }
    int operator()(const TLintOptions& options) const {
        try {
            ELintStatus status = eLintClean;
            WriteStandardOutput([&](std::ostream& out) { status = RunLint(options, out); });
            return status;
        } catch (const std::exception& error) {
            Report(DescribeFailure(error));
            return eLintTrouble;
        }
    }
    int operator()(const TReportOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunReport(options, out); });
    }
    // Status 1 means that the inventories differ, so that failures need another one.
    int operator()(const TDiffOptions& options) const {
        try {
            EDiffStatus status = eDiffSame;
            WriteStandardOutput([&](std::ostream& out) { status = RunDiff(options, out); });
            return status;
        } catch (const std::exception& error) {
            Report(DescribeFailure(error));
            return eDiffTrouble;
        }
    }
    int operator()(const TCollectOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunCollect(options, out); });
    }
    int operator()(const TSendOptions& options) const {
        return PrintResult([&](std::ostream& out) { return RunSend(options, out); });
    }
    int operator()(const TSnapshotOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunSnapshot(options, out); });
    }
    int operator()(const TCaptureOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunCapture(options, out); });
    }
    int operator()(const TRedactOptions& options) const {
        RequireProcFileSystem();
        return PrintResult([&](std::ostream& out) { return RunRedact(options, out); });
    }
    int operator()(const TCollectorsOptions&) const { return Print(ListCollectors); }
    int operator()(const TCompletionOptions& options) const {
        return Print([&](std::ostream& out) { WriteCompletion(options, out); });
    }
    int operator()(const TFleetWords& words) const { ExecuteFleet(words); }
    int operator()(const TEarlyExit& exit) const { return exit.status; }

  private:
    static int PrintResult(const std::function<EExitStatus(std::ostream&)>& run) {
        EExitStatus status = eExitDone;
        WriteStandardOutput([&](std::ostream& out) { status = run(out); });
        return status;
    }
    static int Print(const std::function<void(std::ostream&)>& write) {
        WriteStandardOutput(write);
        return eExitDone;
    }
};

// If a standard stream is closed, the next file that is opened would get its descriptor and receive its
// output. The read-only null device takes its place: it reads as empty and fails on writes.
void OccupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            (void)::open("/dev/null", O_RDONLY);  // gets the lowest free descriptor: this one
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    OccupyStandardStreams();
    try {
        EndOnSignals();
        TCommand command;
        // ParseCommandLine prints help and version.
        WriteStandardOutput([&](std::ostream&) { command = ParseCommandLine(argc, argv); });
        const int status = std::visit(TRunCommand{}, command);
        BlockIfSignalled();
        return status;
    } catch (const std::exception& error) {
        Report(DescribeFailure(error));
    }
    return eExitFailed;
}
