// The process that makes the request is forked off, so it finds all that was collected, and the settings and
// the log of the run, in place. What it answers comes back as a CIM-XML document in a file without a name:
// the results, and an instance that tells how it went. A document that breaks off, or none, is no answer.
#include "vorhost/run/isolated_request.h"

#include "os/file_descriptor.h"
#include "text/shown_text.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/run_failure.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char outcomeClassName[] = "NOXINFO_Outcome";
constexpr char failureProperty[] = "Failure";
constexpr char loadTimeProperty[] = "LoadNanoseconds";
constexpr char obstacleProperty[] = "CredentialObstacle";

[[noreturn]] void FailToStart(const TPluginRequest& request, int error) {
    throw TRunFailure("cannot start a process for plug-in " + request.pluginFile + ": " +
                      std::generic_category().message(error));
}

// The host itself cannot hand the answer over: no fault of the plug-in.
class THandOverError : public TRunFailure {
  public:
    using TRunFailure::TRunFailure;
};

// Shared by both processes, gone with the last of them. Its descriptor alone is used, so that it needs
// neither another one nor /proc.
class TAnswerFile {
  public:
    explicit TAnswerFile(const TPluginRequest& request)
        : descriptor_(::memfd_create("noxinfo-answer", MFD_CLOEXEC)) {
        if (!descriptor_.IsOpen()) {
            FailToStart(request, errno);
        }
    }

    void Save(const TMemoryNamespace& answer) const {
        std::ostringstream stream;
        SaveNamespace(answer, stream);
        const std::string_view text = stream.view();
        for (std::size_t done = 0; done < text.size();) {
            const ssize_t count =
                ::pwrite(descriptor_.Get(), text.data() + done, text.size() - done, static_cast<off_t>(done));
            if (count < 0 && errno != EINTR) {
                throw THandOverError(std::generic_category().message(errno));
            }
            done += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
    }

    std::string Read() const {
        std::string text;
        std::array<char, 65536> bytes{};
        for (;;) {
            const ssize_t count =
                ::pread(descriptor_.Get(), bytes.data(), bytes.size(), static_cast<off_t>(text.size()));
            if (count < 0 && errno != EINTR) {
                throw THandOverError(std::generic_category().message(errno));
            }
            if (count == 0) {
                return text;
            }
            text.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        }
    }

  private:
    TFileDescriptor descriptor_;
};

// What keeps the host's own part of the process from handing an answer over. Memory that both processes
// share: nothing can fail about noting it.
class THostTrouble {
  public:
    explicit THostTrouble(const TPluginRequest& request)
        : text_(static_cast<char*>(
              ::mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (text_ == MAP_FAILED) {
            FailToStart(request, errno);
        }
    }
    ~THostTrouble() { (void)::munmap(text_, sizeBytes); }  // fails for what is no mapping
    THostTrouble(const THostTrouble&) = delete;
    THostTrouble& operator=(const THostTrouble&) = delete;

    void Note(const char* cause) noexcept { (void)std::strncpy(text_, cause, sizeBytes - 1); }
    std::string Get() const { return text_; }

  private:
    static constexpr std::size_t sizeBytes = 1024;  // zero bytes at first

    char* text_;
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
    TMemoryInstance& outcome = AddOutcome(saved);
    outcome.Set(loadTimeProperty, TCIMValue(static_cast<std::uint64_t>(answer.loadTime.count())));
    outcome.Set(obstacleProperty, TCIMValue(ToShownText(answer.credentialObstacle)));
    CopyInstances(answer.results, *saved.AddClass(request.resultClass->GetName()));
    try {
        file.Save(saved);
    } catch (const TCimXmlError& error) {
        throw TRunFailure(request.pluginFile + ": its result cannot be handed over: " + error.what());
    }
}

void SaveFailure(const std::string& failure, const TAnswerFile& file) {
    TMemoryNamespace saved;
    AddOutcome(saved).Set(failureProperty, TCIMValue(ToShownText(failure)));
    file.Save(saved);
}

// A signal for the parent, a kill included, is to end this process as well.
void EndWithParent(pid_t parent) {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(eExitFailed);  // it ended before that was set
    }
}

void SaveOutcome(const TPluginRequest& request, const TAnswerFile& file) {
    try {
        SaveAnswer(request, file);
    } catch (const THandOverError&) {
        throw;
    } catch (const std::exception& error) {
        SaveFailure(DescribeFailure(error), file);
    }
}

// Nothing leaves it, for it would go on in what belongs to the parent.
[[noreturn]] void AnswerAndEnd(const TPluginRequest& request, const TAnswerFile& file,
                               THostTrouble& trouble) noexcept {
    try {
        SaveOutcome(request, file);
    } catch (const std::bad_alloc&) {
        trouble.Note("out of memory");
    } catch (const std::exception& error) {
        trouble.Note(error.what());
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

[[noreturn]] void FailToTakeOver(const TPluginRequest& request, const std::string& cause) {
    throw TRunFailure("the answer of plug-in " + request.pluginFile +
                      " cannot be taken over from its process: " + cause);
}

void RequireEnd(const TPluginRequest& request, const THostTrouble& trouble, int status) {
    if (const std::string cause = trouble.Get(); !cause.empty()) {
        FailToTakeOver(request, cause);
    }
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        const char* const name = ::sigdescr_np(number);
        throw TRunFailure("plug-in " + request.pluginFile + " died of signal " + std::to_string(number) +
                          (name == nullptr ? "" : " (" + std::string(name) + ")"));
    }
}

std::string RequireText(const TPluginRequest& request, const TAnswerFile& file, int status) {
    std::string text;
    try {
        text = file.Read();
    } catch (const THandOverError& error) {
        FailToTakeOver(request, error.what());
    }
    if (WEXITSTATUS(status) != eExitDone || text.empty()) {
        throw TRunFailure("plug-in " + request.pluginFile + " ended its process with exit status " +
                          std::to_string(WEXITSTATUS(status)));
    }
    return text;
}

TPluginAnswer ReadAnswer(const TPluginRequest& request, const TMemoryNamespace& saved) {
    const auto outcomes = saved.FindClass(outcomeClassName);
    const auto results = saved.FindClass(request.resultClass->GetName());
    if (outcomes == nullptr || outcomes->GetInstances().empty()) {
        FailToTakeOver(request, "no outcome");
    }
    const TMemoryInstance& outcome = *outcomes->GetInstances().front();
    if (const TCIMValue* failure = outcome.Find(failureProperty)) {
        throw TRunFailure(failure->ToString(10));
    }
    const TCIMValue* loadTime = outcome.Find(loadTimeProperty);
    if (loadTime == nullptr || results == nullptr || results->GetInstances().empty()) {
        FailToTakeOver(request, "no result");
    }
    const TCIMValue* obstacle = outcome.Find(obstacleProperty);
    return {results->GetInstances(), std::chrono::nanoseconds(loadTime->GetUnsigned()),
            obstacle == nullptr ? std::string() : obstacle->ToString(10)};
}

}  // namespace

TPluginAnswer AskPluginInIsolation(const TPluginRequest& request) {
    const TAnswerFile file(request);
    THostTrouble trouble(request);
    TChildProcess process(request, [&] { AnswerAndEnd(request, file, trouble); });
    const int status = process.Wait();
    RequireEnd(request, trouble, status);
    TMemoryNamespace saved;
    try {
        LoadNamespace("its answer", RequireText(request, file, status), saved);
    } catch (const TCimXmlError& error) {
        FailToTakeOver(request, error.what());
    }
    return ReadAnswer(request, saved);
}

}  // namespace NVORHOST
