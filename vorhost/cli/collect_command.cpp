#include "vorhost/cli/collect_command.h"

#include "vorhost/cimxml/base64.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/cli/isolated_request.h"
#include "vorhost/cli/log_sinks.h"
#include "vorhost/cli/namespace_source.h"
#include "vorhost/cli/output_file.h"
#include "vorhost/cli/plugin_request.h"
#include "vorhost/cli/private_directory.h"
#include "vorhost/cli/program_paths.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/cli/summary.h"
#include "vorhost/services/host_settings.h"
#include "vorhost/system/rooted_files.h"
#include "vorhost/upload/entity_service.h"

#include <boost/shared_ptr.hpp>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

constexpr char identityVariable[] = "ZETKELID";
constexpr char resultClassName[] = "KELSG_CADAT";
constexpr char computerSystemClassName[] = "KELSG_ComputerSystem";
constexpr char hardwareFileName[] = "hardwareinventory.xml.gz";
constexpr char inventoryProperty[] = "InventoryRCF";
constexpr char systemFileName[] = "systeminformation.xml.gz";

using TInstances = std::vector<boost::shared_ptr<TMemoryInstance>>;

// Measures the steps of a run one after the other.
class TStepClock {
  public:
    void Finish(std::string step) { Finish(std::move(step), std::chrono::steady_clock::now() - last_); }
    // A step of known duration.
    void Finish(std::string step, std::chrono::nanoseconds duration) {
        times_.push_back({std::move(step), duration});
        last_ += duration;
    }
    std::vector<TStepTime> TakeTimes() {
        times_.push_back({"total", last_ - start_});
        return std::move(times_);
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last_ = start_;
    std::vector<TStepTime> times_;
};

void CheckDirectory(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_directory(path, error)) {
        throw TRunFailure("cannot write to directory " + path + ": " +
                          (error ? error.message() : "not a directory"));
    }
    if (::access(path.c_str(), W_OK | X_OK) != 0) {
        throw TRunFailure("cannot write to directory " + path + ": " +
                          std::generic_category().message(errno));
    }
}

void SetIdentity(const std::optional<std::string>& kelId) {
    if (kelId) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread looks at the environment
        ::setenv(identityVariable, kelId->c_str(), /*overwrite=*/1);
    }
}

bool HasIdentity() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread changes the environment
    const char* identity = std::getenv(identityVariable);
    return identity != nullptr && *identity != '\0';
}

// Without an identity no credential is asked for, so nobody need learn of this machine.
EReachability ChooseReachability(const TCollectOptions& options) {
    return options.reachability.value_or(HasIdentity() ? EReachability::network : EReachability::yes);
}

void ApplySettings(const TCollectOptions& options, const boost::shared_ptr<TMemoryNamespace>& collected) {
    THostSettings settings;
    settings.localTime = options.source.localTime;
    settings.reachability = ChooseReachability(options);
    settings.collected = collected;
    SetHostSettings(settings);
    SetEntityService(options.entityService);
}

// A saved namespace need not have the class that results go to.
boost::shared_ptr<TMemoryClass> ResultClass(TMemoryNamespace& collected) {
    const auto found = collected.FindClass(resultClassName);
    return found ? found : collected.AddClass(resultClassName);
}

// What the run was to write: each document is read through, and ready to be moved, before any file is moved.
std::vector<TInventoryDocument> FinishedDocuments(const TPrivateDirectory& workplace) {
    std::vector<const char*> names{hardwareFileName};
    if (HasIdentity()) {
        names.push_back(systemFileName);
    }
    std::vector<TInventoryDocument> documents;
    for (const char* name : names) {
        documents.push_back(ReadInventoryDocument(workplace.GetPath(), name));
        if (!documents.back().isWhole) {
            throw TRunFailure(std::string("the plug-in has not written ") + name + " to its end" +
                              workplace.DescribeObstacle());
        }
        workplace.Protect(name);
    }
    return documents;
}

// The plug-in says nothing when it cannot read its document back, and makes a result of what it has.
void RequireInventory(const TInstances& results, const TPrivateDirectory& workplace) {
    const TRootedFiles files(workplace.GetPath());
    const auto bytes = files.ReadBytes(std::string("/") + hardwareFileName, std::string::npos);
    if (!bytes.IsOk()) {
        throw TRunFailure("cannot read " + bytes.error.substr(1));
    }
    const TCIMValue expected(EncodeBase64(bytes.value));
    for (const auto& result : results) {
        const TCIMValue* const inventory = result->Find(inventoryProperty);
        if (inventory != nullptr && *inventory != expected) {
            throw TRunFailure(std::string("the plug-in has not read ") + hardwareFileName +
                              " back to its end");
        }
    }
}

// All of them, or none when a signal ends the run: one run's files belong together.
void MoveIntoPlace(std::optional<TOutputFile>& resultFile, TPrivateDirectory& workplace,
                   const std::vector<TInventoryDocument>& documents) {
    const TUninterrupted together;
    if (resultFile) {
        resultFile->MoveIntoPlace(together);
    }
    for (const TInventoryDocument& document : documents) {
        workplace.MoveOut(document.fileName, together);
    }
}

bool HasInstances(const TMemoryNamespace& collected, const char* className) {
    const auto found = collected.FindClass(className);
    return found != nullptr && !found->GetInstances().empty();
}

// Nothing is inventoried without the type of the machine.
std::string HintAtComputerSystem(const TSourceOptions& source, const TMemoryNamespace& collected) {
    if (HasInstances(collected, computerSystemClassName)) {
        return {};
    }
    if (!source.namespaceFile.empty()) {
        return HasInstances(collected, resultClassName)
                   ? source.namespaceFile + " holds the result of a run: vorhost snapshot saves a namespace"
                   : source.namespaceFile + " holds no computer system, whose type is needed";
    }
    const bool isLeftOut = !source.collectors.only.empty() || !source.collectors.skip.empty();
    return std::string("no computer system was collected, whose type is needed") +
           (isLeftOut ? ": --only has to have computer-system, and --skip must not" : "");
}

std::string TextOf(const TMemoryInstance& instance, std::string_view property) {
    const TCIMValue* value = instance.Find(property);
    return value == nullptr ? std::string() : value->ToString(10);
}

std::string DescribeMachine(const TMemoryNamespace& collected, const TMemoryInstance& result) {
    std::string text = "type " + TextOf(result, "MachineType");
    const auto systems = collected.FindClass(computerSystemClassName);
    if (systems == nullptr || systems->GetInstances().empty()) {
        return text;
    }
    const TMemoryInstance& system = *systems->GetInstances().front();
    std::string name = TextOf(system, "Manufacturer");
    name += (name.empty() ? "" : " ") + TextOf(system, "ProductName");
    const std::string serial = TextOf(system, "SerialNumber");
    return name + ", " + text + (serial.empty() ? "" : ", serial number " + serial);
}

std::string DescribeCredential(const TPluginAnswer& answer, bool hasEntityService) {
    if (!TextOf(*answer.results.front(), "Credential").empty()) {
        return "obtained";
    }
    if (!HasIdentity()) {
        return "none: no customer identity";
    }
    if (!answer.credentialObstacle.empty()) {
        return "none: " + answer.credentialObstacle;
    }
    return hasEntityService ? "none: entity service: empty answer"
                            : "none: the plug-in has not asked for one";
}

}  // namespace

void RunCollect(const TCollectOptions& options, std::ostream& out) {
    TStepClock clock;
    CheckDirectory(options.directory);
    const TLogSinks sinks(options.source);
    SetIdentity(options.kelId);
    SetHostSettings({options.source.localTime, ChooseReachability(options), nullptr});
    const TNamespaceSource source = ObtainNamespace(options.source);
    clock.Finish("collect");

    ApplySettings(options, source.collected);
    TPrivateDirectory workplace(options.directory, "cannot write to " + options.directory);
    const TPluginRequest request{options.pluginFile.empty() ? FindOwnPlugin() : options.pluginFile,
                                 source.collected,
                                 ResultClass(*source.collected),
                                 workplace,
                                 sinks,
                                 HintAtComputerSystem(options.source, *source.collected)};
    const TPluginAnswer answer = options.isolates ? AskPluginInIsolation(request) : AskPlugin(request);
    clock.Finish("load plug-in", answer.loadTime);
    clock.Finish("request");

    const TInstances& results = answer.results;
    TRunSummary summary;
    summary.documents = FinishedDocuments(workplace);
    std::optional<TOutputFile> resultFile;
    if (!options.resultFile.empty()) {
        RequireInventory(results, workplace);
        resultFile.emplace(options.resultFile, [&](std::ostream& file) {
            SaveInstances(request.resultClass->GetName(), results, file);
        });
    }
    MoveIntoPlace(resultFile, workplace, summary.documents);
    summary.directory = options.directory;
    summary.origin = source.origin;
    summary.machine = DescribeMachine(*source.collected, *results.front());
    summary.credential = DescribeCredential(answer, !options.entityService.empty());
    summary.failedCollectors = source.failedCollectors;
    summary.deniedSources = source.deniedSources;
    summary.failedSources = source.failedSources;
    summary.replacedBytes = source.replacedBytes;
    clock.Finish("finish");
    summary.times = clock.TakeTimes();
    PrintSummary(summary, out);
}

}  // namespace NVORHOST
