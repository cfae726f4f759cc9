// `noxinfo diff`: what differs between two inventories.
#pragma once

#include "program/command_line.h"

#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {

/// The exit statuses of this command are those of diff(1).
enum EDiffStatus : int {
    eDiffSame = 0,
    eDiffDifferent = 1,
    eDiffTrouble = 2,  ///< a source could not be read, or the output not be written
};

/// Compares the two sources and writes the differences in the format of the options. Nothing is written below
/// --output if a source cannot be read.
/// Errors: throws TRunFailure.
EDiffStatus RunDiff(const TDiffOptions& options, std::ostream& out);

/// Returns the names of the formats, the default first.
std::vector<std::string> ListDiffFormats();

}  // namespace NVORHOST
