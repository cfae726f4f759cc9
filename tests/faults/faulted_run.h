// Runs the program with one of its input and output calls failing.
#pragma once

#include "tests/program/program_run.h"

#include <string>

namespace NTEST {

/// What fails: the `number`-th call of `kind`, with `error`, both as io_faults.cpp names them.
struct TCallFault {
    std::string kind;
    unsigned number = 0;
    bool isLasting = false;  ///< the calls after it fail alike
    std::string error;
};

struct TFaultedRun {
    NVORHOST::TProgramResult result;
    std::string path;  ///< what the call that failed was about; empty when the run made fewer calls
};

/// Only calls that touch what is at or below `watched` are counted.
TFaultedRun RunWithFault(const NVORHOST::TProgramRun& run, const TCallFault& fault,
                         const std::string& watched);

}  // namespace NTEST
