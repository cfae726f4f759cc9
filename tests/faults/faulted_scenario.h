// A command, the files it finds and the files it leaves, to compare runs with an injected fault with the run
// without one.
#pragma once

#include "faulted_run.h"

#include <map>
#include <string>
#include <vector>

namespace NTEST {

/// Contents of files by path below the folder of a run. A hidden folder counts as an empty file.
using TFiles = std::map<std::string, std::string>;

struct TScenario {
    std::vector<std::string> arguments;  ///< DIR is replaced by the folder of the run
    TFiles before;
    std::string log;      ///< the file that every run appends to; empty if there is none
    std::string watched;  ///< only calls for paths below it fail
};

/// Returns all files below a folder.
TFiles FilesIn(const std::string& folder);

class TFaultedScenario {
  public:
    /// Performs the run without a fault, with which all others are compared.
    explicit TFaultedScenario(TScenario scenario);

    const NVORHOST::TProgramResult& WithoutFault() const { return result_; }

    struct TOutcome {
        /// Path of the failed call, with DIR for the folder and * for random names; empty if there was no
        /// such call.
        std::string path;
        /// "done" if output and files equal those of the run without a fault, otherwise the one line with
        /// which it failed. "; X ..." is appended for each difference from that, or from the files before the
        /// run.
        std::string end;
    };
    TOutcome RunWith(const TCallFault& fault) const;

    struct TEnd {
        std::string path;  ///< path of the failed call
        int status = -1;
        /// "all old", "all new" or "some new" for the files that the run writes; "; X ..." is appended for
        /// each unexpected one.
        std::string files;
        bool leavesDirectory = false;  ///< true for a private directory that remains
        /// Outcome of a second run: "done" if all is as if the first one had never run.
        std::string nextRun;
        std::string completed;  ///< the "Completed" row of its summary; empty if there is none
    };
    /// Performs a run in which the fault is a signal that ends it.
    TEnd RunEndedBy(const TCallFault& fault) const;

  private:
    std::string DescribeState(const TFiles& actual) const;

    TScenario scenario_;
    NVORHOST::TProgramResult result_;
    TFiles after_;
};

}  // namespace NTEST
