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

// The plug-in writes to the current directory, and relative paths mean the directory that the user is in: so
// the change is made around the request alone.
class TWorkingDirectory {
  public:
    explicit TWorkingDirectory(const TPrivateDirectory& workplace)
        : previous_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        const bool hasNoWayBack = !previous_.IsOpen() && errno != EACCES;
        if (hasNoWayBack || ::fchdir(workplace.GetDescriptor()) != 0) {
            throw TRunFailure("cannot enter the directory of this run: " +
                              std::generic_category().message(errno));
        }
    }
    ~TWorkingDirectory() { (void)GoBack(); }  // only after a failure, which is the one to report
    TWorkingDirectory(const TWorkingDirectory&) = delete;
    TWorkingDirectory& operator=(const TWorkingDirectory&) = delete;

    void Leave() {
        if (!GoBack()) {
            throw TRunFailure("cannot return to the working directory: " +
                              std::generic_category().message(errno));
        }
    }

  private:
    // From a directory that may not be searched, no relative path leads anywhere, before and after.
    bool GoBack() { return previous_.IsOpen() ? ::fchdir(previous_.Get()) == 0 : ::chdir("/") == 0; }

    TFileDescriptor previous_;
};

[[noreturn]] void Fail(const TPluginRequest& request, const std::string& cause) {
    throw TRunFailure(request.pluginFile + ": the request failed: " + cause);
}

// Whatever the plug-in throws is turned into a text while its library, which may hold that text, is loaded.
void GetData(TPluginLibrary& plugin, const TPluginRequest& request) {
    TWorkingDirectory inDirectory(request.workplace);
    std::vector<boost::shared_ptr<ICIMClass>> resultClasses{request.resultClass};
    try {
        plugin.GetData(request.collected, resultClasses);
    } catch (const NKELVOR20::TVORException& error) {
        Fail(request, std::string(error.what()) + " (host status " +
                          std::to_string(error.GetStatusCode().GetCode()) + ")" +
                          request.workplace.DescribeObstacle());
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
    throw TRunFailure("the plug-in made no result" + (failures.empty() ? "" : ": " + failures.back()) +
                      (request.withoutResultHint.empty() ? "" : "; " + request.withoutResultHint));
}

std::string DescribeCredentialObstacle() {
    if (WasHostUnreachable()) {
        return "the web server cannot be reached";
    }
    const std::string& failure = GetEntityServiceFailure();
    return failure.empty() ? "" : "entity service: " + failure;
}

}  // namespace

TPluginAnswer AskPlugin(const TPluginRequest& request) {
    // Instances that a loaded namespace had already are no results of this request.
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
    answer.credentialObstacle = DescribeCredentialObstacle();
    RequireResult(answer, request);
    request.sinks.RequireWritten();
    return answer;
}

}  // namespace NVORHOST
