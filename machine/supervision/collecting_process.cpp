#include "machine/supervision/collecting_process.h"

#include "machine/capture/capturing_files.h"
#include "machine/capture/capturing_system_calls.h"
#include "machine/names/hardware_database.h"
#include "machine/supervision/collector_message.h"
#include "machine/supervision/machine_door.h"
#include "machine/supervision/recorded_machine.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <new>
#include <system_error>
#include <thread>

namespace NVORHOST {
namespace {

using TMessageSize = std::uint32_t;

[[noreturn]] void FailToStart(const TCollectionTask& task, int error) {
    throw TRunFailure("cannot start a process that collects from " + task.options.sysroot + ": " +
                      std::generic_category().message(error));
}

// ---- in the process that collects

constexpr int outputDescriptor = STDERR_FILENO + 1;

// The run that forked this process may be killed at any time, even before that is asked for here.
void DieWith(pid_t parent) {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(eExitFailed);
    }
}

void ReplaceStandardStreams() {
    int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null < 0) {
        null = ::open("/", O_PATH | O_CLOEXEC);  // neither reads nor writes
    }
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        (void)::dup2(null, stream);
    }
}

// What the kernel may hold for ever must hold nothing that belongs to others.
void LetGoOfTheRun(int output) {
    (void)::setsid();  // cannot fail for a process just forked
    ReplaceStandardStreams();
    (void)::dup2(output, outputDescriptor);
    if (::close_range(outputDescriptor + 1, ~0U, 0) != 0) {
        for (long each = outputDescriptor + 1; each < ::sysconf(_SC_OPEN_MAX); ++each) {
            ::close(static_cast<int>(each));
        }
    }
}

void LeaveWorkingDirectory() {
    if (::chdir("/") != 0) {
        ::_exit(eExitFailed);
    }
}

void WriteAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(outputDescriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            ::_exit(eExitFailed);  // the run is gone
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void Send(ECollectionMessage kind, std::string_view bytes) {
    const auto size = static_cast<TMessageSize>(bytes.size());
    std::string message(sizeof(size) + 1, static_cast<char>(kind));
    std::memcpy(message.data(), &size, sizeof(size));
    WriteAll(message.append(bytes));
}

// The machine is counted as it is without the process that looks at it.
std::string OwnEntry(const TMachineOptions& options) {
    return IsLiveMachine(options) ? "/proc/" + std::to_string(::getpid()) : std::string();
}

// The doors to the machine, each of which passes accesses on to the one before it.
class TDoors {
  public:
    TDoors(const TCollectionTask& task, const TMachineDoor& machine, TAccessPlace& place)
        : collects_(task.collects),
          watched_(machine.GetFiles(), place, task.unanswered, OwnEntry(task.options)),
          answers_(watched_, TLoggingFiles::EKeeps::questionsAndAnswers),
          capturing_(answers_),
          questions_(capturing_, TLoggingFiles::EKeeps::questions),
          calls_(machine.GetCalls()),
          capturingCalls_(calls_) {}

    const ISystemFiles& GetFiles() const {
        return collects_ == ECollects::logs ? static_cast<const ISystemFiles&>(questions_) : watched_;
    }
    const ISystemCalls& GetCalls() const {
        return collects_ == ECollects::logs ? static_cast<const ISystemCalls&>(capturingCalls_) : calls_;
    }
    const TUnansweredPaths& GetTimedOut() const { return watched_.GetTimedOut(); }
    TMachineLog TakeLog() {
        return {answers_.TakeEntries(), questions_.TakeEntries(), capturingCalls_.GetAnswers()};
    }

  private:
    ECollects collects_;
    TWatchedFiles watched_;
    TLoggingFiles answers_;
    TCapturingFiles capturing_;
    TLoggingFiles questions_;
    const ISystemCalls& calls_;
    TCapturingSystemCalls capturingCalls_;
};

void RequireEssentials(const TCollectionTask& task, const TCollectReport& report) {
    if (!report.essentialFailure.empty()) {
        throw TRunFailure("cannot collect from " + task.options.sysroot + ": " + report.essentialFailure);
    }
}

void RunCollectors(const TCollectionTask& task, TDoors& doors,
                   const std::optional<NKELVOR20::TCIMDateTime>& localTime, TAccessPlace& place) {
    const std::span collectors = std::span(task.collectors).subspan(task.first);
    TMemoryNamespace collected;
    const THardwareDatabase names;
    const TCollectContext context{doors.GetFiles(), doors.GetCalls(), collected, localTime, &names};
    TCollectorRuns runs(context, collectors);
    TInstancesWriter instances(collected);
    std::size_t number = task.first;
    for (const TCollector& collector : collectors) {
        place.EnterTask(static_cast<std::uint32_t>(number));
        TCollectReport report = runs.Run(collector);
        // Those of the collectors before it may be among them; each source is named once in the end.
        const TUnansweredPaths& timedOut = doors.GetTimedOut();
        report.timedOutSources.assign(timedOut.begin(), timedOut.end());
        RequireEssentials(task, report);
        TMessageWriter message;
        message.WriteNumber(number++);
        WriteReport(report, message);
        if (task.collects == ECollects::logs) {
            WriteMachineLog(doors.TakeLog(), message);
        } else {
            instances.WriteNew(collector, message);
        }
        Send(ECollectionMessage::result, message.GetBytes());
    }
}

void Collect(const TCollectionTask& task, TAccessPlace& place) {
    const bool isRelative = !task.options.sysroot.starts_with('/');
    if (!isRelative) {
        LeaveWorkingDirectory();
    }
    std::optional<TMachineDoor> machine;
    auto localTime = task.localTime;
    {
        const TAccessUnderWay underWay(place, task.options.sysroot);
        machine.emplace(task.options);
        if (!localTime) {
            localTime = machine->GetLocalTime();
        }
    }
    if (isRelative) {
        LeaveWorkingDirectory();
    }
    Send(ECollectionMessage::opened, localTime ? localTime->ToString() : std::string());
    TDoors doors(task, *machine, place);
    RunCollectors(task, doors, localTime, place);
    Send(ECollectionMessage::done, {});
}

// Nothing leaves it, for it would go on in what belongs to the run; memory that is short even for saying so
// ends the process.
[[noreturn]] void CollectAndEnd(const TCollectionTask& task, TAccessPlace& place) noexcept {
    try {
        Collect(task, place);
    } catch (const TResourcesExhausted& error) {
        Send(ECollectionMessage::failed, "cannot collect from " + task.options.sysroot + ": " + error.what());
    } catch (const std::exception& error) {
        Send(ECollectionMessage::failed, DescribeFailure(error));
    }
    ::_exit(eExitDone);
}

// ---- in the run

// Waits for a process that was killed. One that the kernel holds is left to init.
void Reap(pid_t process) {
    constexpr std::chrono::milliseconds timeToDie(20);
    const auto end = std::chrono::steady_clock::now() + timeToDie;
    std::chrono::microseconds pause(20);
    while (::waitpid(process, nullptr, WNOHANG) == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(pause);
        pause *= 2;
    }
}

}  // namespace

TCollectingProcess::TSharedPlace::TSharedPlace(const TCollectionTask& task) {
    void* const memory = ::mmap(nullptr, sizeof(TAccessPlace), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, /*fd=*/-1, /*offset=*/0);
    if (memory == MAP_FAILED) {
        FailToStart(task, errno);
    }
    place_ = new (memory) TAccessPlace{};
}

TCollectingProcess::TSharedPlace::~TSharedPlace() {
    (void)::munmap(place_, sizeof(TAccessPlace));
}

TCollectingProcess::TCollectingProcess(const TCollectionTask& task) : place_(task) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        FailToStart(task, errno);
    }
    messages_ = TFileDescriptor(ends[0]);
    const TFileDescriptor output(ends[1]);
    // A program started with this signal ignored would not be told how its children ended.
    (void)std::signal(SIGCHLD, SIG_DFL);
    Fork(task, output.Get());
}

void TCollectingProcess::Fork(const TCollectionTask& task, int output) {
    const pid_t parent = ::getpid();
    const TUninterrupted begun;
    process_ = ::fork();
    if (process_ < 0) {
        FailToStart(task, errno);
    }
    if (process_ == 0) {
        DieWith(parent);
        RestoreDefaultSignals();
        LetGoOfTheRun(output);
        CollectAndEnd(task, *place_);
    }
    unfinished_.emplace(begun, [process = process_] {
        ::kill(process, SIGKILL);
        Reap(process);
    });
}

TCollectingProcess::~TCollectingProcess() {
    {
        const TUninterrupted finished;
        unfinished_->Finish(finished);
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
        }
    }
    if (process_ > 0) {
        Reap(process_);
    }
}

std::vector<TCollectingProcess::TMessage> TCollectingProcess::ReadMessages() {
    constexpr std::size_t blockBytes = std::size_t{64} << 10;
    const std::size_t before = unread_.size();
    unread_.resize(before + blockBytes);
    const ssize_t count = ::read(messages_.Get(), unread_.data() + before, blockBytes);
    unread_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0 || (count < 0 && errno != EINTR)) {
        messages_ = TFileDescriptor();
    }
    std::vector<TMessage> messages;
    std::size_t place = 0;
    TMessageSize size = 0;
    constexpr std::size_t headBytes = sizeof(size) + 1;
    while (unread_.size() - place >= headBytes) {
        std::memcpy(&size, unread_.data() + place, sizeof(size));
        if (unread_.size() - place - headBytes < size) {
            break;
        }
        messages.push_back({static_cast<ECollectionMessage>(unread_[place + sizeof(size)]),
                            unread_.substr(place + headBytes, size)});
        place += headBytes + size;
    }
    unread_.erase(0, place);
    return messages;
}

std::string TCollectingProcess::DescribeEnd() {
    {
        const TUninterrupted finished;
        unfinished_->Finish(finished);
    }
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    if (!WIFSIGNALED(status)) {
        return "ended with exit status " + std::to_string(WEXITSTATUS(status));
    }
    const char* const name = ::sigdescr_np(WTERMSIG(status));
    return "died of signal " + std::to_string(WTERMSIG(status)) +
           (name == nullptr ? "" : " (" + std::string(name) + ")");
}

}  // namespace NVORHOST
