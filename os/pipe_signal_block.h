// Keeps SIGPIPE away from a thread while a library writes to connections.
#pragma once

#include <csignal>

namespace NVORHOST {

/// Blocks SIGPIPE in the calling thread; writes to a closed connection then fail with EPIPE only. The end of
/// the block discards a signal that such a write has raised, and keeps one that was pending before. The
/// disposition of the signal, which belongs to the whole process, is not changed. Begins and ends in one
/// thread.
class TPipeSignalBlock {
  public:
    TPipeSignalBlock();
    ~TPipeSignalBlock();
    TPipeSignalBlock(const TPipeSignalBlock&) = delete;
    TPipeSignalBlock& operator=(const TPipeSignalBlock&) = delete;

  private:
    sigset_t before_{};
    bool wasPending_ = false;
};

}  // namespace NVORHOST
