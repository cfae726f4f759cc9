// Chooses where the core logger's lines go in one run.
#pragma once

#include <string>
#include <vector>

namespace NVORHOST {

struct TLogOptions {
    std::string file;  ///< empty: not given
    bool verbose = false;
};

/// Sends log lines where the options say, for as long as it lives, and keeps the hard failures for the final
/// message.
class TLogSinks {
  public:
    /// Throws TRunFailure when the log file cannot be opened for appending.
    explicit TLogSinks(const TLogOptions& options);
    ~TLogSinks();
    TLogSinks(const TLogSinks&) = delete;
    TLogSinks& operator=(const TLogSinks&) = delete;

    /// Throws TRunFailure when a line could not be written to the log file.
    void RequireWritten() const;

    /// Messages of level 0, in order.
    const std::vector<std::string>& GetHardFailures() const { return hardFailures_; }

  private:
    void LogToFile();
    void LogToStandardError(bool everyLevel);

    std::string logFile_;
    int logError_ = 0;  // errno of the first line that could not be written
    std::vector<std::string> hardFailures_;
};

}  // namespace NVORHOST
