// The forked process inherits the collected namespace, the settings and the log. It returns its answer as a
// CIM-XML document in an anonymous file: the results, and an instance of `outcomeClassName` with the load
// time or the failure. A missing or truncated document means that the process died.
#include "vorhost/run/isolated_request.h"

#include "os/file_descriptor.h"
#include "text/shown_text.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/run/child_process.h"
#include "vorhost/run/exit_status.h"
#include "vorhost/run/run_failure.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
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

// The host cannot transfer the answer; the plug-in is not at fault.
class THandOverError : public TRunFailure {
  public:
    using TRunFailure::TRunFailure;
};

// An anonymous file that both processes share. It is accessed only by its descriptor, with explicit offsets,
// so that it needs neither /proc nor a second descriptor.
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

// The reason why the child cannot transfer its answer. It is passed in shared memory, because that cannot
// fail.
class TSharedFailure {
  public:
    explicit TSharedFailure(const TPluginRequest& request)
        : text_(static_cast<char*>(
              ::mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (text_ == MAP_FAILED) {
            FailToStart(request, errno);
        }
    }
    ~TSharedFailure() { (void)::munmap(text_, sizeBytes); }
    TSharedFailure(const TSharedFailure&) = delete;
    TSharedFailure& operator=(const TSharedFailure&) = delete;

    void Set(const char* cause) noexcept { (void)std::strncpy(text_, cause, sizeBytes - 1); }
    std::optional<std::string> Find() const {
        return *text_ == '\0' ? std::nullopt : std::optional<std::string>(text_);
    }

  private:
    static constexpr std::size_t sizeBytes = 1024;  // initially all zero

    char* text_;
};

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
    const TPluginAnswer answer = RunPluginRequest(request);
    TMemoryNamespace saved;
    TMemoryInstance& outcome = AddOutcome(saved);
    outcome.Set(loadTimeProperty, TCIMValue(static_cast<std::uint64_t>(answer.loadTime.count())));
    if (answer.credentialObstacle) {
        outcome.Set(obstacleProperty, TCIMValue(ToShownText(*answer.credentialObstacle)));
    }
    CopyInstances(answer.results, *saved.AddClass(request.resultClass->GetName()));
    try {
        file.Save(saved);
    } catch (const TDocumentError& error) {
        throw TRunFailure(request.pluginFile + ": cannot transfer its result: " + error.what());
    }
}

void SaveFailure(const std::string& failure, const TAnswerFile& file) {
    TMemoryNamespace saved;
    AddOutcome(saved).Set(failureProperty, TCIMValue(ToShownText(failure)));
    file.Save(saved);
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

// noexcept: an escaping exception would unwind into the parent's frames. If there is not even memory for the
// report of a failure, the child terminates.
[[noreturn]] void AnswerAndExit(const TPluginRequest& request, const TAnswerFile& file,
                                TSharedFailure& failure) noexcept {
    try {
        SaveOutcome(request, file);
    } catch (const std::bad_alloc&) {
        failure.Set("out of memory");
    } catch (const std::exception& error) {
        failure.Set(error.what());
    }
    // Flushes the output of the plug-in. _exit skips all other end-of-process work, which belongs to the
    // parent.
    std::cout.flush();
    (void)std::fflush(nullptr);
    ::_exit(eExitDone);
}

[[noreturn]] void FailToReceive(const TPluginRequest& request, const std::string& cause) {
    throw TRunFailure("cannot receive the answer of plug-in " + request.pluginFile +
                      " from its process: " + cause);
}

// Returns the status of the ended process in the form of waitpid.
int RunChild(const TPluginRequest& request, const std::function<void()>& run) {
    try {
        return TChildProcess(run, /*reapLimit=*/std::nullopt).Wait();
    } catch (const std::system_error& error) {
        FailToStart(request, error.code().value());
    }
}

void RequireEnd(const TPluginRequest& request, const TSharedFailure& failure, int status) {
    if (const auto cause = failure.Find()) {
        FailToReceive(request, *cause);
    }
    if (WIFSIGNALED(status)) {
        throw TRunFailure("plug-in " + request.pluginFile + " died of " + DescribeSignal(WTERMSIG(status)));
    }
}

std::string RequireText(const TPluginRequest& request, const TAnswerFile& file, int status) {
    std::string text;
    try {
        text = file.Read();
    } catch (const THandOverError& error) {
        FailToReceive(request, error.what());
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
        FailToReceive(request, "no outcome");
    }
    const TMemoryInstance& outcome = *outcomes->GetInstances().front();
    if (const TCIMValue* failure = outcome.Find(failureProperty)) {
        throw TRunFailure(failure->ToString(10));
    }
    const TCIMValue* loadTime = outcome.Find(loadTimeProperty);
    if (loadTime == nullptr || results == nullptr || results->GetInstances().empty()) {
        FailToReceive(request, "no result");
    }
    const TCIMValue* obstacle = outcome.Find(obstacleProperty);
    return {results->GetInstances(), std::chrono::nanoseconds(loadTime->GetUnsigned()),
            obstacle == nullptr ? std::nullopt : std::optional(obstacle->ToString(10))};
}

}  // namespace

TPluginAnswer RunIsolatedRequest(const TPluginRequest& request) {
    const TAnswerFile file(request);
    TSharedFailure failure(request);
    const int status = RunChild(request, [&] { AnswerAndExit(request, file, failure); });
    RequireEnd(request, failure, status);
    TMemoryNamespace saved;
    try {
        LoadNamespace("its answer", RequireText(request, file, status), saved);
    } catch (const TDocumentError& error) {
        FailToReceive(request, error.what());
    }
    return ReadAnswer(request, saved);
}

}  // namespace NVORHOST
