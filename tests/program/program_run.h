// Runs the built program and captures its output.
#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace NVORHOST {

struct TProgramResult {
    int status = -1;        ///< exit status; 128 + n when signal n ended it
    bool isKilled = false;  ///< ended by a signal; the status alone could also be an exit status
    std::string standardOutput;
    std::string standardError;
};

/// The arguments and environment of a program.
struct TProgramRun {
    std::vector<std::string> arguments;
    std::string directory;  ///< working directory
    std::map<std::string, std::string>
        environment;  ///< added to a clean one (PATH, and ASAN_OPTIONS and the like)
};

/// A running program. Killed on destruction unless Wait was called.
class TRunningProgram {
  public:
    /// Searches PATH for `program`.
    TRunningProgram(const std::string& program, const TProgramRun& run);
    ~TRunningProgram();
    TRunningProgram(const TRunningProgram&) = delete;
    TRunningProgram& operator=(const TRunningProgram&) = delete;

    pid_t GetProcess() const { return process_; }
    void Send(int signal) const;
    /// Waits for the end of the program. Call once.
    TProgramResult Wait();

  private:
    class TCapture;

    std::unique_ptr<TCapture> output_;
    std::unique_ptr<TCapture> error_;
    pid_t process_ = -1;
};

/// Starts noxinfo.
TRunningProgram StartNoxinfo(const TProgramRun& run);
/// Runs noxinfo and waits for its end.
TProgramResult RunNoxinfo(const TProgramRun& run);
/// Runs another program, which is searched in PATH, and waits for its end.
TProgramResult RunProgram(const std::string& program, const TProgramRun& run);

}  // namespace NVORHOST
