// Sends from a spool with the options of the command line.
#pragma once

#include "program/command_line.h"
#include "sending/sender.h"
#include "sending/spool.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// The outcome of sending, for the summary.
struct TSendingSummary {
    TSendingReport report;
    std::string site;   ///< scheme, host and port of the server
    std::string spool;  ///< path
    std::size_t waitingFiles = 0;
    std::size_t waitingRuns = 0;
    std::size_t droppedRuns = 0;  ///< of the oldest runs, because of the limit

    bool IsComplete() const { return report.problems.empty() && waitingFiles == 0 && droppedRuns == 0; }
};

/// Everything that sending needs. It is opened before a machine is collected, so that wrong settings are
/// reported at once.
class TSendingRun {
  public:
    /// Opens the spool of the options, or the default one, and reads the files with credentials.
    /// Errors: throws TRunFailure or std::runtime_error with path and cause.
    explicit TSendingRun(const TSendingOptions& options);

    /// Adds a run to the spool. If that fails, the cause becomes a problem of the summary.
    void Add(const TRunRecord& record, const std::vector<TOutgoingFile>& files, bool syncs);

    /// Sends what waits to `url` and applies the limit of the spool.
    /// Errors: throws TRunFailure if the spool cannot be read, std::runtime_error if libcurl cannot be
    /// loaded.
    TSendingSummary Send(const std::string& url);

    const TSpool& GetSpool() const { return spool_; }

  private:
    void SendLocked(const TUrlTemplate& url, TSendingSummary& summary);

    const TSendingOptions& options_;
    TTransferCredentials credentials_;
    TSpool spool_;
    std::vector<std::string> problems_;
};

/// Describes why `url` may not be used with the options: http without TLS to another machine; nullopt if it
/// may.
std::optional<std::string> FindUrlFault(const TUrlTemplate& url, const TSendingOptions& options);

/// Prints the problems of an incomplete sending to standard error, a line for each.
void PrintProblems(const TSendingSummary& summary);

}  // namespace NVORHOST
