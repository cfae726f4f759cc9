// A thread that is cancelled unwinds its stack as an exception does that nothing may stop: a handler that
// keeps it ends the whole process. Only a real thread shows whether code lets it pass.
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

/// Runs `step` on a thread of its own; true when the thread was cancelled and has unwound to its end, false
/// when `step` returned.
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
