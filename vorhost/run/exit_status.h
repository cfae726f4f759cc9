// The exit statuses of the program, for scripts.
#pragma once

namespace NVORHOST {

enum EExitStatus : int {
    eExitDone = 0,
    eExitFailed = 1,  ///< the request failed; one line on standard error gives the reason
    eExitUsage = 2,   ///< the command line is wrong
    eExitGaps = 3,    ///< with --strict: done, but a source could not be read
    eExitUnsent = 4,  ///< done, but not everything could be sent; it waits in the spool
};

}  // namespace NVORHOST
