#include "program/send_command.h"

#include "program/sending_run.h"
#include "program/spool_path.h"
#include "program/summary.h"
#include "vorhost/run/run_failure.h"

#include <sys/stat.h>

#include <cerrno>
#include <ostream>
#include <stdexcept>
#include <system_error>

namespace NVORHOST {
namespace {

// A missing default spool means that nothing was ever collected for sending; a missing DIR is a mistake.
bool IsMissing(const TSendingOptions& options) {
    struct stat status {};
    const std::string path = options.spool ? *options.spool : FindSpoolPath();
    const bool isMissing = ::stat(path.c_str(), &status) != 0 && errno == ENOENT;
    if (isMissing && options.spool) {
        throw TRunFailure("cannot use the spool " + path + ": " + std::generic_category().message(ENOENT));
    }
    return isMissing;
}

void RequireUsable(const std::string& url, const TSendingOptions& options) {
    try {
        if (const auto fault = FindUrlFault(TUrlTemplate(url), options)) {
            throw TRunFailure("the URL of the waiting runs cannot be used: " + *fault);
        }
    } catch (const std::invalid_argument& error) {
        throw TRunFailure(std::string("the URL of the waiting runs cannot be used: ") + error.what());
    }
}

// Returns the URL for which all runs were collected. If there are several, the credentials belong to one of
// them only.
std::string FindCommonUrl(const std::vector<TWaitingRun>& runs, const TSendingOptions& options) {
    const std::string& url = runs.front().record.url;
    for (const TWaitingRun& run : runs) {
        if (run.record.url != url) {
            throw TRunFailure("the waiting runs were collected for different URLs; choose one with --send");
        }
    }
    RequireUsable(url, options);
    return url;
}

}  // namespace

EExitStatus RunSend(const TSendOptions& options, std::ostream& out) {
    if (IsMissing(options.sending)) {
        out << "Nothing waits to be sent.\n";
        return eExitDone;
    }
    TSendingRun run(options.sending);
    const TSpoolContents waiting = run.GetSpool().List();
    if (waiting.runs.empty() && waiting.unreadable.empty()) {
        out << "Nothing waits to be sent.\n";
        return eExitDone;
    }
    if (waiting.runs.empty()) {
        throw TRunFailure("the runs in " + run.GetSpool().GetPath() + " have no valid records");
    }
    const TSendingSummary summary =
        run.Send(options.sending.url ? *options.sending.url : FindCommonUrl(waiting.runs, options.sending));
    PrintSending(summary, out);
    PrintProblems(summary);
    return summary.IsComplete() ? eExitDone : eExitUnsent;
}

}  // namespace NVORHOST
