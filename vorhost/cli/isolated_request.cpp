// The process that makes the request is forked off, so it finds all that was collected, and the settings and
// the log of the run, in place. What it answers comes back as a CIM-XML document in a file without a name:
// the results, and an instance that tells how it went. A document that breaks off, or none, is no answer.
#include "vorhost/cli/isolated_request.h"

#include "vorhost/cimxml/load.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/system/file_descriptor.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char outcomeClassName[] = "VORHOST_Outcome";
constexpr char failureProperty[] = "Failure";
constexpr char loadTimeProperty[] = "LoadNanoseconds";

[[noreturn]] void FailToStart(const TPluginRequest& request, int error) {
    throw TRunFailure("cannot start a process for plug-in " + request.pluginFile + ": " +
                      std::generic_category().message(error));
}

// Shared by both processes, gone with the last of them.
class TAnswerFile {
  public:
    explicit TAnswerFile(const TPluginRequest& request)
        : descriptor_(::memfd_create("vorhost-answer", MFD_CLOEXEC)) {
        if (!descriptor_.IsOpen()) {
            FailToStart(request, errno);
        }
    }

    std::string GetPath() const { return "/proc/self/fd/" + std::to_string(descriptor_.Get()); }
    bool IsEmpty() const { return std::filesystem::file_size(GetPath()) == 0; }

    void Save(const TMemoryNamespace& answer) const {
        std::ofstream stream(GetPath(), std::ios::binary | std::ios::trunc);
        SaveNamespace(answer, stream);
        if (!stream.flush()) {
            throw TRunFailure("cannot write the plug-in's answer");
        }
    }

  private:
    TFileDescriptor descriptor_;
};

// ---- in the process of the plug-in

TMemoryInstance& AddOutcome(TMemoryNamespace& answer) {
    const auto outcome = answer.AddClass(outcomeClassName)->NewInstance();
    outcome->CommitInstance({});
    return *outcome;
}

void CopyInstances(const std::vector<boost::shared_ptr<TMemoryInstance>>& instances, TMemoryClass& target) {
    for (const auto& instance : instances) {
        const auto copy = target.NewInstance();
        for (const TPropertyView& property : instance->GetProperties()) {
            copy->Set(property.name, property.value);
        }
        copy->CommitInstance({});
    }
}

void SaveAnswer(const TPluginRequest& request, const TAnswerFile& file) {
    const TPluginAnswer answer = AskPlugin(request);
    TMemoryNamespace saved;
    AddOutcome(saved).Set(loadTimeProperty, TCIMValue(static_cast<std::uint64_t>(answer.loadTime.count())));
    CopyInstances(answer.results, *saved.AddClass(request.resultClass->GetName()));
    try {
        file.Save(saved);
    } catch (const TCimXmlError& error) {
        throw TRunFailure(request.pluginFile + ": its result cannot be handed over: " + error.what());
    }
}

void SaveFailure(const std::string& failure, const TAnswerFile& file) {
    TMemoryNamespace saved;
    AddOutcome(saved).Set(failureProperty, TCIMValue(failure));
    file.Save(saved);
}

// A signal for the parent, a kill included, is to end this process as well.
void EndWithParent(pid_t parent) {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(eExitFailed);  // it ended before that was set
    }
}

// Nothing leaves it, for it would go on in what belongs to the parent; memory that is short even for telling
// so ends the process.
[[noreturn]] void AnswerAndEnd(const TPluginRequest& request, const TAnswerFile& file) noexcept {
    try {
        SaveAnswer(request, file);
    } catch (const std::exception& error) {
        SaveFailure(DescribeFailure(error), file);
    }
    // What the plug-in printed comes out; nothing else that belongs to the parent may end twice.
    std::cout.flush();
    (void)std::fflush(nullptr);
    ::_exit(eExitDone);
}

// ---- in the process that asks

class TChildProcess {
  public:
    /// `run` does not return.
    template <typename TRun>
    TChildProcess(const TPluginRequest& request, const TRun& run) {
        // A process started with this signal ignored would not be told how its children ended.
        (void)std::signal(SIGCHLD, SIG_DFL);
        const pid_t parent = ::getpid();
        if (const int error = Fork(); error != 0) {
            FailToStart(request, error);
        }
        if (process_ == 0) {
            EndWithParent(parent);
            RestoreDefaultSignals();
            run();
        }
    }

    /// The status as of waitpid.
    int Wait() {
        // It stays a zombie until no signal can take its number for that of a running process any more.
        siginfo_t ignored{};
        while (::waitid(P_PID, static_cast<id_t>(process_), &ignored, WEXITED | WNOWAIT) != 0 &&
               errno == EINTR) {
        }
        const TUninterrupted finished;
        unfinished_->Finish(finished);
        return Reap(process_);
    }

  private:
    int Fork() {
        const TUninterrupted begun;
        process_ = ::fork();
        if (process_ < 0) {
            return errno;
        }
        if (process_ > 0) {
            unfinished_.emplace(begun, [process = process_] {
                ::kill(process, SIGKILL);
                Reap(process);
            });
        }
        return 0;
    }

    static int Reap(pid_t process) {
        int status = 0;
        while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
        return status;
    }

    pid_t process_ = -1;
    std::optional<TUnfinished> unfinished_;  // of the parent's alone
};

[[noreturn]] void FailUnreadable(const TPluginRequest& request, const std::string& cause) {
    throw TRunFailure(request.pluginFile + ": the answer of its process cannot be read: " + cause);
}

void RequireAnswer(const TPluginRequest& request, const TAnswerFile& file, int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        const char* const name = ::sigdescr_np(number);
        throw TRunFailure("plug-in " + request.pluginFile + " died of signal " + std::to_string(number) +
                          (name == nullptr ? "" : " (" + std::string(name) + ")"));
    }
    if (WEXITSTATUS(status) != eExitDone || file.IsEmpty()) {
        throw TRunFailure("plug-in " + request.pluginFile + " ended its process with exit status " +
                          std::to_string(WEXITSTATUS(status)));
    }
}

TPluginAnswer ReadAnswer(const TPluginRequest& request, const TMemoryNamespace& saved) {
    const auto outcomes = saved.FindClass(outcomeClassName);
    const auto results = saved.FindClass(request.resultClass->GetName());
    if (outcomes == nullptr || outcomes->GetInstances().empty()) {
        FailUnreadable(request, "no outcome");
    }
    const TMemoryInstance& outcome = *outcomes->GetInstances().front();
    if (const TCIMValue* failure = outcome.Find(failureProperty)) {
        throw TRunFailure(failure->ToString(10));
    }
    const TCIMValue* loadTime = outcome.Find(loadTimeProperty);
    if (loadTime == nullptr || results == nullptr || results->GetInstances().empty()) {
        FailUnreadable(request, "no result");
    }
    return {results->GetInstances(), std::chrono::nanoseconds(loadTime->GetUnsigned())};
}

}  // namespace

TPluginAnswer AskPluginInIsolation(const TPluginRequest& request) {
    const TAnswerFile file(request);
    TChildProcess process(request, [&] { AnswerAndEnd(request, file); });
    RequireAnswer(request, file, process.Wait());
    TMemoryNamespace saved;
    try {
        LoadNamespace(file.GetPath(), saved);
    } catch (const TCimXmlError& error) {
        FailUnreadable(request, error.what());
    }
    return ReadAnswer(request, saved);
}

}  // namespace NVORHOST
