#include "vorhost/run/plugin_request.h"

#include "host/vor_exception.h"
#include "os/file_descriptor.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/host_settings.h"
#include "vorhost/services/plugin_library.h"
#include "vorhost/upload/entity_service.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace NVORHOST {
namespace {

using TClock = std::chrono::steady_clock;

// The plug-in writes to the working directory. It is changed only during the request, because relative paths
// of the command line refer to the original one.
class TWorkingDirectory {
  public:
    explicit TWorkingDirectory(const TPrivateDirectory& workplace)
        : previous_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        const bool canReturn = previous_.IsOpen() || errno == EACCES;
        if (!canReturn || ::fchdir(workplace.GetDescriptor()) != 0) {
            throw TRunFailure("cannot enter the directory of this run: " +
                              std::generic_category().message(errno));
        }
    }
    ~TWorkingDirectory() { (void)GoBack(); }  // after a failure, which is reported instead of this one
    TWorkingDirectory(const TWorkingDirectory&) = delete;
    TWorkingDirectory& operator=(const TWorkingDirectory&) = delete;

    void Leave() {
        if (!GoBack()) {
            throw TRunFailure("cannot return to the working directory: " +
                              std::generic_category().message(errno));
        }
    }

  private:
    // Without search permission (EACCES) no relative path can be resolved anyway, so "/" does as well.
    bool GoBack() { return previous_.IsOpen() ? ::fchdir(previous_.Get()) == 0 : ::chdir("/") == 0; }

    TFileDescriptor previous_;
};

[[noreturn]] void Fail(const TPluginRequest& request, const std::string& cause) {
    throw TRunFailure(request.pluginFile + ": the request failed: " + cause);
}

// Converts exceptions of the plug-in to TRunFailure here: their types and texts may be part of its library,
// which is about to be unloaded.
void GetData(TPluginLibrary& plugin, const TPluginRequest& request) {
    TWorkingDirectory inDirectory(request.workplace);
    std::vector<boost::shared_ptr<ICIMClass>> resultClasses{request.resultClass};
    try {
        plugin.GetData(request.collected, resultClasses);
    } catch (const NKELVOR20::TVORException& error) {
        Fail(request, std::string(error.what()) + " (host status " +
                          std::to_string(error.GetStatusCode().GetCode()) + ")" +
                          DescribeWriteFailure(request.workplace));
    } catch (const std::exception& error) {
        Fail(request, std::string("exception: ") + error.what());
    } catch (...) {
        Fail(request, "exception of unknown type");
    }
    inDirectory.Leave();
}

void RequireResult(const TPluginAnswer& answer, const TPluginRequest& request) {
    if (!answer.results.empty()) {
        return;
    }
    const auto& failures = request.sinks.GetHardFailures();
    throw TRunFailure("the plug-in returned no result" + (failures.empty() ? "" : ": " + failures.back()) +
                      (request.noResultHint ? "; " + *request.noResultHint : ""));
}

std::optional<std::string> FindCredentialObstacle() {
    if (WasHostUnreachable()) {
        return "the web server cannot be reached";
    }
    const auto& failure = FindEntityServiceFailure();
    return failure ? std::optional("entity service: " + *failure) : std::nullopt;
}

}  // namespace

TPluginAnswer RunPluginRequest(const TPluginRequest& request) {
    // A loaded namespace may already contain instances of the result class.
    const auto countBefore = static_cast<std::ptrdiff_t>(request.resultClass->GetInstances().size());
    TPluginAnswer answer;
    {
        const auto start = TClock::now();
        TPluginLibrary plugin(request.pluginFile);
        answer.loadTime = TClock::now() - start;
        GetData(plugin, request);
    }
    const auto& instances = request.resultClass->GetInstances();
    answer.results.assign(instances.begin() + countBefore, instances.end());
    answer.credentialObstacle = FindCredentialObstacle();
    RequireResult(answer, request);
    request.sinks.RequireWritten();
    return answer;
}

}  // namespace NVORHOST
