// Removing directories and waiting for processes is nothing that a signal handler may do, and the thread that
// a signal meets may be at work on the very same: so handlers only wake a thread that waits for them. The
// signals are not blocked, because programs that a plug-in starts would inherit that.
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

// Every signal that can end a process from outside or through one of its limits without a dump, and SIGQUIT.
constexpr std::array endingSignals = {
    SIGTERM, SIGINT,  SIGHUP,  SIGQUIT, SIGPIPE, SIGALRM,   SIGXCPU,   SIGXFSZ,
    SIGUSR1, SIGUSR2, SIGPOLL, SIGPROF, SIGPWR,  SIGVTALRM, SIGSTKFLT,
};
constexpr int firstSignalStatus = 128;

// Handlers have no other way to anything than through objects of the whole process.
std::atomic<int> receivedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "written by signal handlers");
sem_t signalReceived;

struct TRegistry {
    std::mutex mutex;
    std::vector<const TUnfinished*> unfinished;
    pid_t process = ::getpid();  // a process forked off has a copy of all this, and no say in it
};

// Never destroyed: the waiting thread outlives the statics of the program.
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

void UndoUnfinished(const TRegistry& registry) {
    for (auto each = registry.unfinished.rbegin(); each != registry.unfinished.rend(); ++each) {
        try {
            (*each)->Undo();
        } catch (...) {  // NOLINT(bugprone-empty-catch): the program ends either way, and the rest is undone
        }
    }
}

[[noreturn]] void EndWhenReceived() {
    while (::sem_wait(&signalReceived) != 0) {
    }
    TRegistry& registry = GetRegistry();
    registry.mutex.lock();  // for good: nothing is begun or finished any more
    UndoUnfinished(registry);
    ::_exit(firstSignalStatus + receivedSignal);
}

// Runs at every exit of the program. The plug-in calls exit as well as main does, but in the midst of a run.
void EndWhenCutShort() {
    TRegistry& registry = GetRegistry();
    if (registry.process != ::getpid()) {
        return;
    }
    registry.mutex.lock();  // for good, as above
    if (registry.unfinished.empty()) {
        return;
    }
    UndoUnfinished(registry);
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
    std::thread(EndWhenReceived).detach();
    (void)std::atexit(&EndWhenCutShort);  // there is room for the first ones
    (void)std::at_quick_exit(&EndWhenCutShort);
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

void GiveWayToSignals() {
    while (receivedSignal != 0) {
        ::pause();
    }
}

TUninterrupted::TUninterrupted() : lock_(GetRegistry().mutex) {}

TUnfinished::TUnfinished(const TUninterrupted& /*begun*/, std::function<void()> undo)
    : undo_(std::move(undo)) {
    GetRegistry().unfinished.push_back(this);
}

TUnfinished::~TUnfinished() {
    const TUninterrupted finished;
    Finish(finished);
}

void TUnfinished::Finish(const TUninterrupted& /*finished*/) {
    std::erase(GetRegistry().unfinished, this);
}

}  // namespace NVORHOST
