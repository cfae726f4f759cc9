#include "os/pipe_signal_block.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

using NVORHOST::TPipeSignalBlock;

// Returns errno of a write to a pipe without a reader.
int WriteToBrokenPipe() {
    int ends[2];
    if (::pipe(ends) != 0) {
        return -1;
    }
    (void)::close(ends[0]);
    const int cause = ::write(ends[1], "x", 1) < 0 ? errno : 0;
    (void)::close(ends[1]);
    return cause;
}

bool IsBlocked() {
    sigset_t current;
    return ::pthread_sigmask(SIG_BLOCK, nullptr, &current) == 0 && sigismember(&current, SIGPIPE) == 1;
}

TEST(TPipeSignalBlockDeathTest, WithoutItABrokenPipeEndsTheProcess) {
    EXPECT_EXIT(
        {
            (void)std::signal(SIGPIPE, SIG_DFL);
            WriteToBrokenPipe();
        },
        testing::KilledBySignal(SIGPIPE), "");
}

TEST(TPipeSignalBlockDeathTest, OutlivesABrokenPipe) {
    EXPECT_EXIT(
        {
            (void)std::signal(SIGPIPE, SIG_DFL);
            int cause = 0;
            {
                const TPipeSignalBlock block;
                cause = WriteToBrokenPipe();
            }
            std::_Exit(cause == EPIPE && !IsBlocked() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(TPipeSignalBlockDeathTest, KeepsASignalThatWasPendingBefore) {
    EXPECT_EXIT(
        {
            (void)std::signal(SIGPIPE, SIG_DFL);
            sigset_t signals;
            (void)sigemptyset(&signals);
            (void)sigaddset(&signals, SIGPIPE);
            (void)::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
            (void)::raise(SIGPIPE);
            { const TPipeSignalBlock block; }
            (void)::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
            std::_Exit(0);  // not reached: the pending signal arrives first
        },
        testing::KilledBySignal(SIGPIPE), "");
}

}  // namespace
