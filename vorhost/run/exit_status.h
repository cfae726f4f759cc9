// How the program ends, for scripts.
#pragma once

namespace NVORHOST {

/// Exit statuses of the program.
enum EExitStatus : int {
    eExitDone = 0,
    eExitFailed = 1,  ///< the request failed; one line on standard error says why
    eExitUsage = 2,   ///< the command line cannot be understood
    eExitGaps = 3,    ///< with --strict: done, but some sources could not be read
};

}  // namespace NVORHOST
