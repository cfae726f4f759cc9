#include "machine/supervision/collecting_work.h"

#include "machine/capture/file_recorder.h"
#include "machine/capture/system_call_recorder.h"
#include "machine/names/hardware_database.h"
#include "machine/supervision/collector_message.h"
#include "machine/supervision/machine_door.h"
#include "machine/supervision/message_frame.h"
#include "machine/supervision/recorded_machine.h"
#include "machine/system/watched_system_calls.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <span>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr int outputDescriptor = STDERR_FILENO + 1;

void ReplaceStandardStreams() {
    int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (null < 0) {
        null = ::open("/", O_PATH | O_CLOEXEC);  // fails all reads and writes
    }
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        (void)::dup2(null, stream);
    }
}

void CloseOtherDescriptors() {
    if (::close_range(outputDescriptor + 1, ~0U, 0) != 0) {
        for (long i = outputDescriptor + 1; i < ::sysconf(_SC_OPEN_MAX); ++i) {
            ::close(static_cast<int>(i));
        }
    }
}

// The kernel may hold this process in a system call forever. It must not keep a pipe or terminal of others
// open.
void DetachFromRun(int output) {
    (void)::setsid();  // cannot fail in a process that was just forked
    ReplaceStandardStreams();
    (void)::dup2(output, outputDescriptor);
    CloseOtherDescriptors();
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
            ::_exit(eExitFailed);  // the run has ended
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void Send(ECollectionMessage kind, std::string_view bytes) {
    WriteAll(EncodeFrame(static_cast<unsigned char>(kind), bytes));
}

// The process that collects is left out of the processes of the machine.
std::optional<std::string> FindOwnEntry(const TMachineOptions& options) {
    return IsLiveMachine(options) ? std::optional("/proc/" + std::to_string(::getpid())) : std::nullopt;
}

// The doors to the machine. Each passes accesses on to the one that is declared before it.
class TDoors {
  public:
    TDoors(const TCollectionTask& task, const TMachineDoor& machine, TAccessPlace& place)
        : collects_(task.collects),
          watched_(machine.GetFiles(), place, task.unanswered, FindOwnEntry(task.options)),
          responses_(watched_, TRequestLog::EKept::requestsAndResponses),
          capturing_(responses_),
          requests_(capturing_, TRequestLog::EKept::requests),
          calls_(machine.GetCalls(), place, task.unanswered),
          capturingCalls_(calls_) {}

    const ISystemFiles& GetFiles() const {
        return collects_ == ECollects::logs ? static_cast<const ISystemFiles&>(requests_) : watched_;
    }
    const ISystemCalls& GetCalls() const {
        return collects_ == ECollects::logs ? static_cast<const ISystemCalls&>(capturingCalls_) : calls_;
    }
    TUnansweredPaths GetTimedOut() const {
        TUnansweredPaths paths = watched_.GetTimedOut();
        paths.insert(calls_.GetTimedOut().begin(), calls_.GetTimedOut().end());
        return paths;
    }
    TMachineLog TakeLog() {
        return {responses_.TakeEntries(), requests_.TakeEntries(), capturingCalls_.GetAnswers()};
    }

  private:
    ECollects collects_;
    TWatchedFiles watched_;
    TRequestLog responses_;
    TFileRecorder capturing_;
    TRequestLog requests_;
    TWatchedSystemCalls calls_;
    TSystemCallRecorder capturingCalls_;
};

void RequireEssentials(const TCollectionTask& task, const TCollectReport& report) {
    if (report.essentialFailure) {
        throw TRunFailure("cannot collect from " + task.options.sysroot + ": " + *report.essentialFailure);
    }
}

void RunCollectors(const TCollectionTask& task, TDoors& doors,
                   const std::optional<NKELVOR20::TCIMDateTime>& localTime, TAccessPlace& place) {
    const std::span collectors = std::span(task.collectors).subspan(task.first);
    TMemoryNamespace collected;
    const THardwareDatabase names;
    const TCollectContext context{
        .files = doors.GetFiles(),
        .calls = doors.GetCalls(),
        .target = collected,
        .localTime = localTime,
        .deviceNames = &names,
        .wakes = task.options.wakes,
        .withSources = task.options.withSources || task.options.countsValues,
        .keepsSources = task.options.withSources,
        .unanswered = &task.unanswered,
    };
    TCollectorRuns runs(context, collectors);
    TInstancesWriter instances(collected);
    std::size_t index = task.first;
    for (const TCollector& collector : collectors) {
        place.EnterTask(static_cast<std::uint32_t>(index));
        TCollectReport report = runs.Run(collector);
        // The list also has the paths of earlier collectors; CombineReports removes duplicates.
        const TUnansweredPaths timedOut = doors.GetTimedOut();
        report.timedOutSources.assign(timedOut.begin(), timedOut.end());
        RequireEssentials(task, report);
        TMessageWriter message;
        message.WriteNumber(index++);
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
            localTime = machine->FindLocalTime();
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

}  // namespace

void CollectAndExit(const TCollectionTask& task, TAccessPlace& place, int output) noexcept {
    DetachFromRun(output);
    try {
        Collect(task, place);
    } catch (const TResourcesExhausted& error) {
        Send(ECollectionMessage::failed, "cannot collect from " + task.options.sysroot + ": " + error.what());
    } catch (const std::exception& error) {
        Send(ECollectionMessage::failed, DescribeFailure(error));
    }
    ::_exit(eExitDone);
}

}  // namespace NVORHOST
