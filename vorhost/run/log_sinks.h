// Directs the lines of the core logger during one run.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

struct TLogOptions {
    std::optional<std::string> file;  ///< receives every line; absent: hard failures go to standard error
    bool verbose = false;             ///< every line goes to standard error
};

/// Adds sinks to the core logger according to the options, until destruction. Collects the hard failures for
/// the final message.
class TLogSinks {
  public:
    /// Errors: throws TRunFailure if the log file cannot be opened for appending.
    explicit TLogSinks(const TLogOptions& options);
    ~TLogSinks();
    TLogSinks(const TLogSinks&) = delete;
    TLogSinks& operator=(const TLogSinks&) = delete;

    /// Throws TRunFailure if a line could not be written to the log file.
    void RequireWritten() const;

    /// Messages of level 0, in order.
    const std::vector<std::string>& GetHardFailures() const { return hardFailures_; }

  private:
    void LogToFile(const std::string& path);
    void LogToStandardError(bool everyLevel);

    std::optional<std::string> logFile_;
    int logError_ = 0;  // errno of the first line that could not be written
    std::vector<std::string> hardFailures_;
};

}  // namespace NVORHOST
