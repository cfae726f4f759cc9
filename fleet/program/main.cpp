// Entry point of noxinfo-fleet, which noxinfo fleet executes: runs the command and turns failures into one
// line and an exit status.

#include "fleet/program/fleet_command_line.h"
#include "fleet/program/question_commands.h"
#include "text/shown_text.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/interruption.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/run_failure.h"

#include <ctime>
#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    try {
        NVORHOST::EndOnSignals();
        NFLEET::TFleetOptions options;
        int status = NVORHOST::eExitDone;
        NVORHOST::WriteStandardOutput([&](std::ostream& out) {
            options = NFLEET::ParseFleetCommandLine(argc, argv, std::time(nullptr));
            status = options.command.empty() ? options.earlyStatus : NFLEET::RunFleetCommand(options, out);
        });
        NVORHOST::BlockIfSignalled();
        return status;
    } catch (const std::exception& error) {
        NVORHOST::BlockIfSignalled();
        std::cerr << "noxinfo fleet: " << NVORHOST::ToShownText(NVORHOST::DescribeFailure(error)) << '\n';
    }
    return NVORHOST::eExitFailed;
}
