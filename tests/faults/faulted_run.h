// Runs the program while one of its input and output calls fails.
#pragma once

#include "tests/program/program_run.h"

#include <string>

namespace NTEST {

/// A fault: the `number`-th call of `kind` fails with `error`. io_faults.cpp documents kinds and errors.
struct TCallFault {
    std::string kind;
    unsigned number = 0;
    bool isLasting = false;  ///< true if the calls after it fail, too
    std::string error;
};

struct TFaultedRun {
    NVORHOST::TProgramResult result;
    std::string path;  ///< path of the failed call; empty if the run made fewer calls
};

/// Counts only calls for paths at or below `watched`.
TFaultedRun RunWithFault(const NVORHOST::TProgramRun& run, const TCallFault& fault,
                         const std::string& watched);

}  // namespace NTEST
