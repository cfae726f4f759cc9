// Ends a run that is asked to end: SIGTERM, SIGINT, SIGHUP and every other signal that ends a process by
// default, crashes apart, take effect at any point of a run, in a plug-in that never returns as well, and
// leave nothing unfinished behind. Nor does a plug-in that ends the program.
#pragma once

#include <functional>
#include <mutex>

namespace NVORHOST {

/// From here on each of the signals ends the program with status 128 + its number, as soon as no
/// `TUninterrupted` is there, after undoing what is unfinished. A signal that is ignored already, as nohup
/// has it, stays ignored. A call of exit or quick_exit while something is unfinished undoes it as well, and
/// ends the program as a failed run, whatever status the call asked for. To be called once, before there is
/// anything to undo. Errors: throws std::system_error when there is no thread to be had.
void EndOnSignals();

/// Gives the signals their default effect again, those that are ignored apart. For a process forked off,
/// which has no thread that waits for them.
void RestoreDefaultSignals();

/// Does not return when one of the signals has come: the program is about to end. For whoever is to report
/// how a run went, which the signal may have had its part in.
void GiveWayToSignals();

/// While it lives, no signal ends the program: for the few steps that happen all or not at all. One at a
/// time.
class TUninterrupted {
  public:
    TUninterrupted();
    ~TUninterrupted() = default;
    TUninterrupted(const TUninterrupted&) = delete;
    TUninterrupted& operator=(const TUninterrupted&) = delete;

  private:
    std::lock_guard<std::mutex> lock_;
};

/// Something begun that must not outlive the program. What was begun last is undone first.
class TUnfinished {
  public:
    /// `undo` runs only when the program is ended in the midst of a run; for a signal on another thread,
    /// while this one may still be at work. Beginning and noting it have to stand under the same
    /// `TUninterrupted`.
    TUnfinished(const TUninterrupted& begun, std::function<void()> undo);
    /// Forgets it. Not while the thread has a `TUninterrupted`, which it would wait for.
    ~TUnfinished();
    TUnfinished(const TUnfinished&) = delete;
    TUnfinished& operator=(const TUnfinished&) = delete;

    /// Forgets it at the same moment at which it is finished.
    void Finish(const TUninterrupted& finished);
    void Undo() const { undo_(); }

  private:
    std::function<void()> undo_;
};

}  // namespace NVORHOST
