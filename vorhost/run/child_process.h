// A forked process that dies with the run: it is killed when a signal ends the program, and it dies when this
// process is killed.
#pragma once

#include "vorhost/run/interruption.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace NVORHOST {

class TChildProcess {
  public:
    /// Time to wait for a killed process to die. Absent: no limit. A process that the kernel holds in a
    /// system call dies only when the call returns; init reaps it then.
    using TReapLimit = std::optional<std::chrono::milliseconds>;

    /// Forks a process that calls `run`, which must neither return nor throw.
    /// Errors: throws std::system_error when the process cannot be created.
    TChildProcess(const std::function<void()>& run, TReapLimit reapLimit);
    /// Kills the process and reaps it, unless `Wait` has reaped it.
    ~TChildProcess();
    TChildProcess(const TChildProcess&) = delete;
    TChildProcess& operator=(const TChildProcess&) = delete;

    /// Waits for the process to end; returns its status in the form of waitpid(2). To be called once.
    int Wait();

  private:
    void Fork();

    TReapLimit reapLimit_;
    pid_t process_ = -1;
    bool isReaped_ = false;
    std::optional<TPendingCleanup> cleanup_;  // only in the parent
};

/// Describes a signal for people: "signal 9 (Killed)".
std::string DescribeSignal(int number);

}  // namespace NVORHOST
