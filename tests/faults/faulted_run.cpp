#include "faulted_run.h"

#include "tests/program/temporary_directory.h"

#include <filesystem>

namespace NTEST {

using NVORHOST::TProgramRun;
using NVORHOST::TTemporaryDirectory;

TFaultedRun RunWithFault(const TProgramRun& run, const TCallFault& fault, const std::string& watched) {
    const TTemporaryDirectory scratch;
    const std::string report = scratch / "report";
    TProgramRun faulted = run;
    faulted.environment["LD_PRELOAD"] = NOXINFO_IO_FAULTS;
    faulted.environment["NOXINFO_FAULT"] =
        fault.kind + ":" + std::to_string(fault.number) + (fault.isLasting ? "+" : "") + ":" + fault.error;
    faulted.environment["NOXINFO_FAULT_PATHS"] = watched;
    faulted.environment["NOXINFO_FAULT_REPORT"] = report;
    TFaultedRun done{NVORHOST::RunNoxinfo(faulted), {}};
    if (std::filesystem::exists(report)) {
        const std::string line = NVORHOST::ReadFile(report);
        const std::size_t path = line.find(' ') + 1;
        done.path = line.substr(path, line.find('\n') - path);
    }
    return done;
}

}  // namespace NTEST
