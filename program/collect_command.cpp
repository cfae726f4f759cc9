#include "program/collect_command.h"

#include "program/program_paths.h"
#include "program/namespace_source.h"
#include "program/summary.h"
#include "vorhost/cimxml/base64.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/run/isolated_request.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/output_place.h"
#include "vorhost/run/plugin_request.h"
#include "vorhost/run/private_directory.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/run/target_directory.h"
#include "vorhost/services/host_settings.h"
#include "vorhost/upload/entity_service.h"

#include <boost/shared_ptr.hpp>
#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
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
    settings.localTime = options.source.machine.localTime;
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

// The plug-in reports nothing when it cannot read its document back, and makes a result of what it has.
void RequireInventory(const TInstances& results, const std::string& bytes) {
    const TCIMValue expected(EncodeBase64(bytes));
    for (const auto& result : results) {
        const TCIMValue* const inventory = result->Find(inventoryProperty);
        if (inventory != nullptr && *inventory != expected) {
            throw TRunFailure(std::string("the plug-in has not read ") + hardwareFileName +
                              " back to its end");
        }
    }
}

// A run's documents, each read through and ready to be moved before any file is moved.
std::vector<TInventoryDocument> FinishDocuments(TPrivateDirectory& workplace, const TInstances& results,
                                                bool comparesResults) {
    std::vector<const char*> names{hardwareFileName};
    if (HasIdentity()) {
        names.push_back(systemFileName);
    }
    std::vector<TInventoryDocument> documents;
    for (const char* name : names) {
        TFileDescriptor file = workplace.OpenFile(name, O_RDONLY | O_NONBLOCK);
        documents.push_back(ReadInventoryDocument(file, name));
        if (!documents.back().isWhole) {
            throw TRunFailure(std::string("the plug-in has not written ") + name + " to its end" +
                              workplace.DescribeObstacle());
        }
        if (comparesResults && name == hardwareFileName) {
            RequireInventory(results, ReadCompressedDocument(file, name));
        }
        workplace.Finish(name, std::move(file));
    }
    return documents;
}

// All of them, or none when a signal ends the run: one run's files belong together. Other runs move theirs
// before or after that.
void MoveIntoPlace(std::optional<TOutputFile>& resultFile, TPrivateDirectory& workplace,
                   const TTargetDirectory& target) {
    workplace.PrepareMoves();
    {
        const TTargetLock lock(target);
        workplace.CompleteOthers(lock);
        const TUninterrupted together;
        if (resultFile) {
            resultFile->MoveIntoPlace(together);
        }
        workplace.MoveOut(together);
    }
    workplace.SyncMoves();
    if (resultFile) {
        resultFile->SyncMove();
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
                   ? source.namespaceFile + " holds the result of a run: noxinfo snapshot saves a namespace"
                   : source.namespaceFile + " holds no computer system, whose type is needed";
    }
    const bool isLeftOut = !source.machine.collectors.only.empty() || !source.machine.collectors.skip.empty();
    return std::string("no computer system was collected, whose type is needed") +
           (isLeftOut ? ": --only has to have computer-system, and --skip must not" : "");
}

// Documents in the target that this run has not written.
std::vector<std::string> FindEarlierDocuments(const TTargetDirectory& target) {
    struct stat status {};
    const bool isThere = !HasIdentity() &&
                         ::fstatat(target.GetDescriptor(), systemFileName, &status, AT_SYMLINK_NOFOLLOW) == 0;
    return isThere ? std::vector<std::string>{systemFileName} : std::vector<std::string>();
}

// Where the files of a run go. All are found before anything runs, so that none is the same as another one.
class TCollectOutputs {
  public:
    explicit TCollectOutputs(const TCollectOptions& options)
        : target_(options.directory, "cannot write to directory " + options.directory),
          hardware_(target_, hardwareFileName),
          system_(target_, systemFileName) {
        target_.RequireWritable("cannot write to directory " + options.directory);
        std::vector<TOutputPurpose> places{
            {"the document " + target_.PathOf(hardwareFileName), hardware_},
            {"the document " + target_.PathOf(systemFileName), system_},
        };
        if (!options.source.log.file.empty()) {
            log_.emplace(options.source.log.file, "cannot append to log file " + options.source.log.file);
            places.push_back({"the log file " + options.source.log.file, *log_});
        }
        if (!options.resultFile.empty()) {
            result_.emplace(options.resultFile, "cannot write " + options.resultFile);
            places.push_back({"the result file " + options.resultFile, *result_});
        }
        RequireDistinct(places);
    }

    const TTargetDirectory& GetTarget() const { return target_; }
    const std::optional<TOutputPlace>& GetResult() const { return result_; }

  private:
    TTargetDirectory target_;
    TOutputPlace hardware_;
    TOutputPlace system_;
    std::optional<TOutputPlace> log_;
    std::optional<TOutputPlace> result_;
};

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

EExitStatus RunCollect(const TCollectOptions& options, std::ostream& out) {
    TStepClock clock;
    const TCollectOutputs outputs(options);
    const bool syncs = options.source.syncs;
    const TLogSinks sinks(options.source.log);
    SetIdentity(options.kelId);
    SetHostSettings({options.source.machine.localTime, ChooseReachability(options), nullptr});
    const TNamespaceSource source = ObtainNamespace(options.source);
    clock.Finish("collect");

    ApplySettings(options, source.collected);
    TPrivateDirectory workplace(outputs.GetTarget(), "cannot write to " + options.directory, syncs);
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
    summary.documents = FinishDocuments(workplace, results, outputs.GetResult().has_value());
    std::optional<TOutputFile> resultFile;
    if (outputs.GetResult()) {
        resultFile.emplace(*outputs.GetResult(), options.resultFile, syncs, [&](std::ostream& file) {
            SaveInstances(request.resultClass->GetName(), results, file);
        });
    }
    MoveIntoPlace(resultFile, workplace, outputs.GetTarget());
    summary.completedFiles = workplace.GetCompleted();
    summary.earlierFiles = FindEarlierDocuments(outputs.GetTarget());
    summary.directory = options.directory;
    summary.origin = source.origin;
    summary.machine = DescribeMachine(*source.collected, *results.front());
    summary.credential = DescribeCredential(answer, !options.entityService.empty());
    summary.gaps = source.gaps;
    summary.replacedBytes = source.replacedBytes;
    clock.Finish("finish");
    summary.times = clock.TakeTimes();
    PrintSummary(summary, out);
    return StatusOf(source.gaps, options.source.isStrict);
}

}  // namespace NVORHOST
