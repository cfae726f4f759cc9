#include "os/pipe_signal_block.h"

#include <ctime>

namespace NVORHOST {
namespace {

sigset_t OnlyPipeSignal() {
    sigset_t signals;
    (void)sigemptyset(&signals);
    (void)sigaddset(&signals, SIGPIPE);
    return signals;
}

bool IsPipeSignalPending() {
    sigset_t pending;
    return ::sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

}  // namespace

TPipeSignalBlock::TPipeSignalBlock() {
    wasPending_ = IsPipeSignalPending();
    const sigset_t signals = OnlyPipeSignal();
    (void)::pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

TPipeSignalBlock::~TPipeSignalBlock() {
    if (!wasPending_ && IsPipeSignalPending()) {
        const sigset_t signals = OnlyPipeSignal();
        const timespec atOnce{};
        (void)::sigtimedwait(&signals, nullptr, &atOnce);
    }
    (void)::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace NVORHOST
