#include "vorhost/run/interruption.h"

#include "vorhost/run/exit_status.h"

#include <semaphore.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <thread>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

// Signals that end a process from outside or at a resource limit, without a core dump; and SIGQUIT.
constexpr std::array endingSignals = {
    SIGTERM, SIGINT,  SIGHUP,  SIGQUIT, SIGPIPE, SIGALRM,   SIGXCPU,   SIGXFSZ,
    SIGUSR1, SIGUSR2, SIGPOLL, SIGPROF, SIGPWR,  SIGVTALRM, SIGSTKFLT,
};
constexpr int firstSignalStatus = 128;

// A signal handler can only reach globals.
std::atomic<int> receivedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "written by signal handlers");
sem_t signalReceived;

struct TRegistry {
    std::mutex mutex;
    std::vector<const TPendingCleanup*> pending;
    pid_t process = ::getpid();  // a forked process has a copy of the registry but must not run its cleanups
};

// Never destroyed: the thread outlives the static objects.
TRegistry& GetRegistry() {
    static TRegistry& registry = *new TRegistry;
    return registry;
}

extern "C" void ReceiveSignal(int number) {
    const int error = errno;
    int none = 0;
    receivedSignal.compare_exchange_strong(none, number);
    ::sem_post(&signalReceived);
    errno = error;
}

void RunPendingCleanups(const TRegistry& registry) {
    for (auto each = registry.pending.rbegin(); each != registry.pending.rend(); ++each) {
        try {
            (*each)->Run();
        } catch (...) {  // NOLINT(bugprone-empty-catch): the program ends; the other cleanups still run
        }
    }
}

[[noreturn]] void EndAfterSignal() {
    while (::sem_wait(&signalReceived) != 0) {
    }
    TRegistry& registry = GetRegistry();
    registry.mutex.lock();  // never unlocked: no further step begins or completes
    RunPendingCleanups(registry);
    ::_exit(firstSignalStatus + receivedSignal);
}

// Runs at every exit of the program. Cleanups are pending only if the plug-in called exit during a request.
void EndUnfinishedRun() {
    TRegistry& registry = GetRegistry();
    if (registry.process != ::getpid()) {
        return;
    }
    registry.mutex.lock();  // never unlocked: no further step begins or completes
    if (registry.pending.empty()) {
        return;
    }
    RunPendingCleanups(registry);
    std::cout.flush();
    (void)std::fflush(nullptr);
    std::cerr << "noxinfo: the plug-in ended the program before the run was done\n";
    ::_exit(eExitFailed);
}

void Handle(int number) {
    struct sigaction action {};
    if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
        return;
    }
    action = {};
    action.sa_handler = &ReceiveSignal;
    action.sa_flags = SA_RESTART;
    ::sigfillset(&action.sa_mask);
    (void)::sigaction(number, &action, nullptr);  // cannot fail for these signals
}

}  // namespace

void EndOnSignals() {
    (void)::sem_init(&signalReceived, /*pshared=*/0, 0);  // cannot fail for this value
    std::thread(EndAfterSignal).detach();
    (void)std::atexit(&EndUnfinishedRun);  // cannot fail: room for 32 functions is guaranteed
    (void)std::at_quick_exit(&EndUnfinishedRun);
    for (const int number : endingSignals) {
        Handle(number);
    }
}

void RestoreDefaultSignals() {
    for (const int number : endingSignals) {
        struct sigaction action {};
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler == &ReceiveSignal) {
            (void)std::signal(number, SIG_DFL);
        }
    }
}

void BlockIfSignalled() {
    while (receivedSignal != 0) {
        ::pause();
    }
}

TSignalGuard::TSignalGuard() : lock_(GetRegistry().mutex) {}

TPendingCleanup::TPendingCleanup(const TSignalGuard& /*guard*/, std::function<void()> cleanup)
    : cleanup_(std::move(cleanup)) {
    GetRegistry().pending.push_back(this);
}

TPendingCleanup::~TPendingCleanup() {
    const TSignalGuard guard;
    Dismiss(guard);
}

void TPendingCleanup::Dismiss(const TSignalGuard& /*guard*/) {
    std::erase(GetRegistry().pending, this);
}

}  // namespace NVORHOST
