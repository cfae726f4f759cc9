#include "vorhost/run/child_process.h"

#include "vorhost/run/exit_status.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <thread>

namespace NVORHOST {
namespace {

using TClock = std::chrono::steady_clock;

// The parent may be killed at any time, even before the request below takes effect.
void DieWithParent(pid_t parent) {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(eExitFailed);
    }
}

int ReapWithoutLimit(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

void ReapWithin(pid_t process, std::chrono::milliseconds limit) {
    const auto end = TClock::now() + limit;
    std::chrono::microseconds pause(20);
    while (::waitpid(process, nullptr, WNOHANG) == 0 && TClock::now() < end) {
        std::this_thread::sleep_for(pause);
        pause *= 2;
    }
}

void Reap(pid_t process, const TChildProcess::TReapLimit& limit) {
    if (limit) {
        ReapWithin(process, *limit);
    } else {
        (void)ReapWithoutLimit(process);
    }
}

}  // namespace

TChildProcess::TChildProcess(const std::function<void()>& run, TReapLimit reapLimit) : reapLimit_(reapLimit) {
    // If this signal was ignored when the program started, waitpid would not return a status.
    (void)std::signal(SIGCHLD, SIG_DFL);
    const pid_t parent = ::getpid();
    Fork();
    if (process_ == 0) {
        DieWithParent(parent);
        RestoreDefaultSignals();
        run();
        ::_exit(eExitFailed);
    }
}

// The signal guard ends with this function, in the parent and in the child.
void TChildProcess::Fork() {
    const TSignalGuard guard;
    process_ = ::fork();
    if (process_ < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    if (process_ > 0) {
        cleanup_.emplace(guard, [process = process_, limit = reapLimit_] {
            ::kill(process, SIGKILL);
            Reap(process, limit);
        });
    }
}

TChildProcess::~TChildProcess() {
    if (isReaped_) {
        return;
    }
    {
        const TSignalGuard guard;
        cleanup_->Dismiss(guard);
        ::kill(process_, SIGKILL);
    }
    Reap(process_, reapLimit_);
}

int TChildProcess::Wait() {
    // WNOWAIT keeps the ended process as a zombie until its cleanup is dismissed: a signal that arrives in
    // between must not kill another process that reuses the number.
    siginfo_t ignored{};
    while (::waitid(P_PID, static_cast<id_t>(process_), &ignored, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    const TSignalGuard guard;
    cleanup_->Dismiss(guard);
    isReaped_ = true;
    return ReapWithoutLimit(process_);
}

std::string DescribeSignal(int number) {
    const char* const name = ::sigdescr_np(number);
    return "signal " + std::to_string(number) + (name == nullptr ? "" : " (" + std::string(name) + ")");
}

}  // namespace NVORHOST
