// Ends a run on a signal without leaving partial files or processes. Handled are SIGTERM, SIGINT, SIGHUP and
// every other signal whose default action ends a process without a core dump. They take effect at any point
// of a run, even in a plug-in that never returns. A plug-in that calls exit() is handled as well. Signal
// handlers only wake a thread, which then runs the pending cleanups (docs/decisions/0005).
#pragma once

#include <functional>
#include <mutex>

namespace NVORHOST {

/// Handles the signals from now on. Each of them ends the program with status 128 + its number, as soon as no
/// `TSignalGuard` exists and after the pending cleanups have run. A signal that is already ignored, as under
/// nohup, stays ignored. A call of exit or quick_exit with cleanups pending runs them, too, and ends the
/// program with status 1, regardless of the status that was passed.
/// Call once, before the first `TPendingCleanup`.
/// Errors: throws std::system_error when the thread cannot be created.
void EndOnSignals();

/// Restores the default action of the signals, except for ignored ones. For a forked process, which does not
/// have the thread that runs the cleanups.
void RestoreDefaultSignals();

/// Blocks forever once a signal has been received, so that a run being torn down does not report a misleading
/// failure. Call before printing an outcome.
void BlockIfSignalled();

/// Postpones the end of the program by a signal while it exists: for a few steps that must happen together.
/// Not recursive.
class TSignalGuard {
  public:
    TSignalGuard();
    ~TSignalGuard() = default;
    TSignalGuard(const TSignalGuard&) = delete;
    TSignalGuard& operator=(const TSignalGuard&) = delete;

  private:
    std::lock_guard<std::mutex> lock_;
};

/// A function that runs when the program ends in the middle of a run. Cleanups run in reverse order of their
/// construction.
class TPendingCleanup {
  public:
    /// After a signal, `cleanup` runs on another thread while this thread may still be working. `guard` must
    /// also cover the step that `cleanup` reverts.
    TPendingCleanup(const TSignalGuard& guard, std::function<void()> cleanup);
    /// Dismisses the cleanup. The thread must not hold a `TSignalGuard`: this takes one.
    ~TPendingCleanup();
    TPendingCleanup(const TPendingCleanup&) = delete;
    TPendingCleanup& operator=(const TPendingCleanup&) = delete;

    /// Dismisses the cleanup under a guard that also covers the step that makes it unnecessary. Idempotent.
    void Dismiss(const TSignalGuard& guard);
    void Run() const { cleanup_(); }

  private:
    std::function<void()> cleanup_;
};

}  // namespace NVORHOST
