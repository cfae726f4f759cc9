// `noxinfo diff`: what differs between two inventories.
#pragma once

#include "program/command_line.h"
#include "vorhost/run/exit_status.h"

#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// The exit statuses of this command are those of diff(1), and `eExitGaps` in strict mode.
enum EDiffStatus : int {
    eDiffSame = 0,
    eDiffDifferent = 1,
    eDiffTrouble = 2,  ///< a source could not be read, or the output not be written
    eDiffGaps = eExitGaps,
};

/// Compares the two sources, or the first one and this machine, and writes the differences in the format of
/// the options. Nothing is written below --output if a source cannot be read.
/// Errors: throws TRunFailure.
EDiffStatus RunDiff(const TDiffOptions& options, std::ostream& out);

/// Returns the names of the formats, the default first.
std::vector<std::string> ListDiffFormats();

}  // namespace NVORHOST
