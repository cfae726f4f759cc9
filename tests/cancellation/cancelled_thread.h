// A cancelled thread unwinds its stack like an exception that must not be caught: a handler that does not
// rethrow it aborts the process. Testing that takes a real thread.
#pragma once

#include <pthread.h>

#include <cstdlib>

namespace NTEST {

/// Cancels the calling thread at once.
[[noreturn]] inline void CancelThisThread() {
    pthread_cancel(pthread_self());
    pthread_testcancel();
    std::abort();
}

/// Runs `step` on a new thread. Returns true if the thread was cancelled and unwound completely, false if
/// `step` returned.
template <typename TStep>
bool IsCancelledIn(TStep step) {
    pthread_t thread{};
    const auto start = [](void* argument) -> void* {
        (*static_cast<TStep*>(argument))();
        return nullptr;
    };
    if (pthread_create(&thread, nullptr, start, &step) != 0) {
        std::abort();
    }
    void* outcome = nullptr;
    pthread_join(thread, &outcome);
    return outcome == PTHREAD_CANCELED;
}

}  // namespace NTEST
