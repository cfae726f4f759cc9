// A command, what it finds and what it leaves behind: so that runs with a fault can be held against the one
// without.
#pragma once

#include "faulted_run.h"

#include <map>
#include <string>
#include <vector>

namespace NTEST {

/// Contents by path below the folder of a run. A hidden folder counts as a file without contents.
using TFiles = std::map<std::string, std::string>;

struct TScenario {
    std::vector<std::string> arguments;  ///< DIR stands for the folder of the run
    TFiles before;
    std::string log;      ///< the file that a run adds to, whatever becomes of it; empty: none
    std::string watched;  ///< calls below it are those that fail
};

/// All files below a folder.
TFiles FilesIn(const std::string& folder);

class TFaultedScenario {
  public:
    /// Makes the run without a fault, which is the measure of all others.
    explicit TFaultedScenario(TScenario scenario);

    const NVORHOST::TProgramResult& WithoutFault() const { return result_; }

    struct TOutcome {
        /// What the call that failed was about, with DIR for the folder and * for what runs make up; empty
        /// when there was no such call.
        std::string path;
        /// "done" for all that the run without a fault shows and leaves, else the one line that it ended with
        /// and what stood in the folder before. "; X ..." says what is not so.
        std::string end;
    };
    TOutcome RunWith(const TCallFault& fault) const;

    struct TEnd {
        std::string path;  ///< as above
        int status = -1;
        /// "all old", "all new" or "some new", of the files that the run is to write; "; X ..." says what is
        /// in no run's sense.
        std::string files;
        bool leavesDirectory = false;  ///< the private one
        /// What another run makes of it: "done" when all is as if the first one had never been.
        std::string nextRun;
        std::string completed;  ///< the "Completed" row of its summary; empty without one
    };
    /// The fault is a signal that ends the run.
    TEnd RunEndedBy(const TCallFault& fault) const;

  private:
    std::string DescribeState(const TFiles& actual) const;

    TScenario scenario_;
    NVORHOST::TProgramResult result_;
    TFiles after_;
};

}  // namespace NTEST
