#include "program/collect_command.h"

#include "inventory/saved/result_names.h"
#include "program/namespace_source.h"
#include "program/outgoing_files.h"
#include "program/program_paths.h"
#include "program/sending_run.h"
#include "program/snapshot_file.h"
#include "program/strict_mode.h"
#include "program/summary.h"
#include "vorhost/cimxml/base64.h"
#include "vorhost/cimxml/save.h"
#include "vorhost/run/isolated_request.h"
#include "vorhost/run/kept_runs.h"
#include "vorhost/run/log_sinks.h"
#include "vorhost/run/output_file.h"
#include "vorhost/run/output_place.h"
#include "vorhost/run/plugin_request.h"
#include "vorhost/run/private_directory.h"
#include "vorhost/run/run_environment.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/run/target_directory.h"

#include <boost/shared_ptr.hpp>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <deque>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

constexpr char computerSystemClassName[] = "KELSG_ComputerSystem";
constexpr char hardwareFileName[] = "hardwareinventory.xml.gz";
constexpr char systemFileName[] = "systeminformation.xml.gz";
constexpr char keptSnapshotName[] = "snapshot.xml.gz";

using TInstances = std::vector<boost::shared_ptr<TMemoryInstance>>;

// Measures the consecutive steps of a run.
class TStepClock {
  public:
    void Finish(std::string step) { Finish(std::move(step), std::chrono::steady_clock::now() - last_); }
    // Finishes a step whose duration is known; the rest of the elapsed time belongs to the next step.
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

TRunSettings MakeSettings(const TCollectOptions& options) {
    return {options.source.machine.localTime, options.kelId, options.reachability, options.entityService};
}

// Adds the class of the results to a saved namespace that lacks it.
boost::shared_ptr<TMemoryClass> GetResultClass(TMemoryNamespace& collected) {
    const auto found = collected.FindClass(resultClassName);
    return found ? found : collected.AddClass(resultClassName);
}

// The plug-in does not report a failure to read its document back; its result is then truncated.
void RequireInventory(const TInstances& results, const std::string& bytes) {
    const TCIMValue expected(EncodeBase64(bytes));
    for (const auto& result : results) {
        const TCIMValue* const inventory = result->Find(inventoryProperty);
        if (inventory != nullptr && *inventory != expected) {
            throw TRunFailure(std::string("the plug-in returned a truncated copy of ") + hardwareFileName);
        }
    }
}

std::vector<const char*> ListDocuments(bool hasIdentity) {
    return hasIdentity ? std::vector<const char*>{hardwareFileName, systemFileName}
                       : std::vector<const char*>{hardwareFileName};
}

// Plug-ins of other kinds write no documents.
bool ReturnsInventory(const TInstances& results) {
    return std::ranges::any_of(results,
                               [](const auto& result) { return result->Find(inventoryProperty) != nullptr; });
}

// Reads every document to its end before any of them is moved. Keeps their bytes in `outgoing`, which is
// null if they are not to be sent.
std::vector<TInventoryDocument> FinishDocuments(TPrivateDirectory& workplace, const TInstances& results,
                                                bool hasIdentity, bool comparesResults,
                                                std::vector<TOutgoingFile>* outgoing) {
    std::vector<TInventoryDocument> documents;
    for (const char* name : ListDocuments(hasIdentity)) {
        TFileDescriptor file = workplace.OpenFile(name, O_RDONLY | O_NONBLOCK);
        if (!file.IsOpen() && errno == ENOENT && !ReturnsInventory(results)) {
            continue;
        }
        documents.push_back(ReadInventoryDocument(file, name));
        if (!documents.back().isComplete) {
            throw TRunFailure(std::string("the plug-in wrote a truncated ") + name +
                              DescribeWriteFailure(workplace));
        }
        if (comparesResults && name == hardwareFileName) {
            RequireInventory(results, ReadCompressedDocument(file, name));
        }
        if (outgoing != nullptr) {
            outgoing->push_back({name, ReadCompressedDocument(file, name)});
        }
        workplace.Finish(name, std::move(file));
    }
    return documents;
}

// Moves all files, or none if a signal ends the run. The lock prevents other runs from moving theirs in
// between.
void MoveIntoPlace(std::deque<TOutputFile>& files, TPrivateDirectory& workplace,
                   const TTargetDirectory& target) {
    workplace.PrepareMoves();
    {
        const TTargetLock lock(target);
        workplace.CompleteOthers(lock);
        const TSignalGuard guard;
        for (TOutputFile& file : files) {
            file.MoveIntoPlace(guard);
        }
        workplace.MoveOut(guard);
    }
    workplace.SyncMoves();
    for (const TOutputFile& file : files) {
        file.SyncMove();
    }
}

bool HasInstances(const TMemoryNamespace& collected, const char* className) {
    const auto found = collected.FindClass(className);
    return found != nullptr && !found->GetInstances().empty();
}

// The plug-in returns no result without the machine type, which it takes from the computer system.
std::optional<std::string> FindNoResultHint(const TSourceOptions& source, const TMemoryNamespace& collected) {
    if (HasInstances(collected, computerSystemClassName)) {
        return std::nullopt;
    }
    if (source.namespaceFile) {
        return HasInstances(collected, resultClassName)
                   ? *source.namespaceFile + " is the result of a run; noxinfo snapshot saves a namespace"
                   : *source.namespaceFile + " has no computer system, which is required";
    }
    const bool isSelected =
        !source.machine.collectors.only.empty() || !source.machine.collectors.skip.empty();
    return std::string("no computer system was collected, which is required") +
           (isSelected ? ": --only must include computer-system, and --skip must not" : "");
}

// Lists the documents in the target directory that this run does not replace.
std::vector<std::string> ListEarlierDocuments(const TTargetDirectory& target, bool hasIdentity) {
    struct stat status {};
    const bool exists =
        !hasIdentity && ::fstatat(target.GetDescriptor(), systemFileName, &status, AT_SYMLINK_NOFOLLOW) == 0;
    return exists ? std::vector<std::string>{systemFileName} : std::vector<std::string>();
}

// The output files of a run. They are resolved before the run, to ensure that no two of them are the same
// file. The documents of a kept run are the only files in their directory.
class TCollectOutputs {
  public:
    explicit TCollectOutputs(const TCollectOptions& options)
        : target_(options.directory, "cannot write to directory " + options.directory),
          hardware_(target_, hardwareFileName),
          system_(target_, systemFileName) {
        target_.RequireWritable("cannot write to directory " + options.directory);
        std::vector<TOutputPurpose> places;
        if (!options.keptRuns) {
            places.push_back({"the document " + target_.GetPath(hardwareFileName), hardware_});
            places.push_back({"the document " + target_.GetPath(systemFileName), system_});
        }
        if (const auto& logFile = options.source.log.file) {
            log_.emplace(*logFile, "cannot append to log file " + *logFile);
            places.push_back({"the log file " + *logFile, *log_});
        }
        if (const auto& resultFile = options.resultFile) {
            result_.emplace(*resultFile, "cannot write " + *resultFile);
            places.push_back({"the result file " + *resultFile, *result_});
        }
        if (const auto& snapshotFile = options.snapshotFile) {
            snapshot_.emplace(*snapshotFile, "cannot write " + *snapshotFile);
            places.push_back({"the snapshot " + *snapshotFile, *snapshot_});
        }
        RequireDistinct(places);
    }

    const TTargetDirectory& GetTarget() const { return target_; }
    const std::optional<TOutputPlace>& FindResult() const { return result_; }
    /// Requires that the snapshot was asked for.
    TOutputPlace TakeSnapshot() { return std::move(snapshot_).value(); }

  private:
    TTargetDirectory target_;
    TOutputPlace hardware_;
    TOutputPlace system_;
    std::optional<TOutputPlace> log_;
    std::optional<TOutputPlace> result_;
    std::optional<TOutputPlace> snapshot_;
};

// The files of a run besides its documents; they move into place together with them.
using TOutputFiles = std::deque<TOutputFile>;

// The snapshot of a run. It is written before the request, which commits its results to the namespace. If its
// place cannot be replaced as a whole, such as standard output, its bytes are kept until the request has
// succeeded.
class TRunSnapshot {
  public:
    TRunSnapshot(TOutputPlace place, std::string path, bool syncs, const TMemoryNamespace& collected,
                 TOutputFiles& files)
        : place_(std::move(place)), path_(std::move(path)), syncs_(syncs) {
        if (place_.GetKind() == TOutputPlace::EKind::file) {
            files.emplace_back(place_, path_, syncs_,
                               [&](std::ostream& file) { WriteSnapshot(collected, path_, file); });
        } else {
            std::ostringstream bytes;
            WriteSnapshot(collected, path_, bytes);
            bytes_ = std::move(bytes).str();
        }
    }

    void WriteKept(TOutputFiles& files) const {
        if (bytes_) {
            files.emplace_back(place_, path_, syncs_, [&](std::ostream& file) { file << *bytes_; });
        }
    }

  private:
    TOutputPlace place_;
    std::string path_;
    bool syncs_;
    std::optional<std::string> bytes_;
};

void AddResultFile(const TCollectOutputs& outputs, const TCollectOptions& options,
                   const TPluginRequest& request, const TInstances& results, TOutputFiles& files) {
    if (outputs.FindResult()) {
        files.emplace_back(
            *outputs.FindResult(), *options.resultFile, options.source.syncs,
            [&](std::ostream& file) { SaveInstances(request.resultClass->GetName(), results, file); });
    }
}

// Returns nullopt for a missing or empty property.
std::optional<std::string> FindText(const TMemoryInstance& instance, std::string_view property) {
    const TCIMValue* const value = instance.Find(property);
    std::string text = value == nullptr ? std::string() : value->ToString(10);
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::string DescribeSystem(const TMemoryInstance& system) {
    const std::string manufacturer = FindText(system, "Manufacturer").value_or("");
    return manufacturer + (manufacturer.empty() ? "" : " ") + FindText(system, "ProductName").value_or("");
}

std::string DescribeMachine(const TMemoryNamespace& collected, const TMemoryInstance& result) {
    const auto type = FindText(result, "MachineType");
    const auto systems = collected.FindClass(computerSystemClassName);
    if (systems == nullptr || systems->GetInstances().empty()) {
        return "type " + type.value_or("unknown");
    }
    const TMemoryInstance& system = *systems->GetInstances().front();
    const auto serial = FindText(system, "SerialNumber");
    return DescribeSystem(system) + (type ? ", type " + *type : "") +
           (serial ? ", serial number " + *serial : "");
}

std::string DescribeCredential(const TPluginAnswer& answer, bool hasIdentity, bool hasEntityService) {
    if (FindText(*answer.results.front(), "Credential")) {
        return "obtained";
    }
    if (!hasIdentity) {
        return "none: no customer identity";
    }
    if (answer.credentialObstacle) {
        return "none: " + *answer.credentialObstacle;
    }
    return hasEntityService ? "none: entity service: empty answer" : "none: the plug-in did not request one";
}

// The time that names a kept run.
TRunTime GetRunTime(const TCollectOptions& options) {
    const auto& localTime = options.source.machine.localTime;
    return localTime ? ToRunTime(*localTime)
                     : std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

// A run of the command. The constructor collects; Run passes the namespace to the plug-in and publishes the
// files.
class TCollectRun {
  public:
    explicit TCollectRun(const TCollectOptions& options)
        : options_(options),
          outputs_(options),
          sinks_(options.source.log),
          environment_(MakeSettings(options)) {
        if (options.sending.url) {
            sending_.emplace(options.sending);
        }
        TSourceOptions counted = options.source;
        counted.machine.countsValues = true;
        source_ = ObtainNamespace(counted);
        clock_.Finish("collect");
    }

    EExitStatus Run(std::ostream& out) {
        if (options_.keptRuns) {
            kept_.emplace(outputs_.GetTarget(), "cannot write to " + options_.directory,
                          options_.source.syncs);
        }
        SaveSnapshot();
        environment_.SetCollected(source_.collected);
        TRunSummary summary = MakeDocuments();
        if (kept_) {
            KeepRun(summary);
        }
        clock_.Finish("finish");
        summary.sending = Send();
        summary.times = clock_.TakeTimes();
        PrintSummary(summary, out);
        if (summary.sending && !summary.sending->IsComplete()) {
            PrintProblems(*summary.sending);
            return eExitUnsent;
        }
        return GetExitStatus(source_.outcome, options_.source.isStrict);
    }

  private:
    const TTargetDirectory& GetTarget() const { return kept_ ? kept_->GetTarget() : outputs_.GetTarget(); }

    // The request commits its results to the namespace, so the snapshot is made before it.
    void SaveSnapshot() {
        if (kept_) {
            snapshot_.emplace(TOutputPlace(GetTarget(), keptSnapshotName),
                              GetTarget().GetPath(keptSnapshotName), options_.source.syncs,
                              *source_.collected, files_);
        } else if (options_.snapshotFile) {
            snapshot_.emplace(outputs_.TakeSnapshot(), *options_.snapshotFile, options_.source.syncs,
                              *source_.collected, files_);
        }
        if (snapshot_) {
            clock_.Finish("save snapshot");
        }
        if (sending_) {
            outgoing_.push_back({sentSnapshotName, MakeSnapshotBytes(*source_.collected)});
        }
    }

    // The directory of the run is removed at the end, before anything is sent, which may take minutes.
    TRunSummary MakeDocuments() {
        TPrivateDirectory workplace(GetTarget(), "cannot write to " + options_.directory,
                                    options_.source.syncs);
        const TPluginRequest request = MakeRequest(workplace);
        const TPluginAnswer answer = GetAnswer(request);
        auto documents = Publish(request, answer.results, workplace);
        return Summarise(answer, std::move(documents),
                         kept_ ? kept_->GetCompleted() : workplace.GetCompleted());
    }

    // The private directories of the files end first, because the directory of the run contains them.
    void KeepRun(TRunSummary& summary) {
        files_.clear();
        const std::string name = kept_->MoveIntoPlace(GetRunTime(options_), *options_.keptRuns);
        summary.directory = outputs_.GetTarget().GetPath(name);
    }

    TPluginRequest MakeRequest(TPrivateDirectory& workplace) const {
        return {options_.pluginFile ? *options_.pluginFile : FindOwnPlugin(),
                source_.collected,
                GetResultClass(*source_.collected),
                workplace,
                sinks_,
                FindNoResultHint(options_.source, *source_.collected)};
    }

    TPluginAnswer GetAnswer(const TPluginRequest& request) {
        TPluginAnswer answer = options_.isolates ? RunIsolatedRequest(request) : RunPluginRequest(request);
        clock_.Finish("load plug-in", answer.loadTime);
        clock_.Finish("request");
        return answer;
    }

    // Moves the documents and the other files into place together.
    std::vector<TInventoryDocument> Publish(const TPluginRequest& request, const TInstances& results,
                                            TPrivateDirectory& workplace) {
        auto documents = FinishDocuments(workplace, results, environment_.HasIdentity(),
                                         /*comparesResults=*/outputs_.FindResult().has_value(),
                                         sending_ ? &outgoing_ : nullptr);
        if (snapshot_) {
            snapshot_->WriteKept(files_);
        }
        AddResultFile(outputs_, options_, request, results, files_);
        if (sending_) {
            outgoing_.push_back({sentResultName, MakeResultBytes(request.resultClass->GetName(), results)});
        }
        MoveIntoPlace(files_, workplace, GetTarget());
        return documents;
    }

    std::optional<TSendingSummary> Send() {
        if (!sending_) {
            return std::nullopt;
        }
        files_.clear();
        snapshot_.reset();
        kept_.reset();
        const std::string& url = *options_.sending.url;
        sending_->Add(MakeRunRecord(url, *source_.collected), outgoing_, options_.source.syncs);
        TSendingSummary summary = sending_->Send(url);
        clock_.Finish("send");
        return summary;
    }

    TRunSummary Summarise(const TPluginAnswer& answer, std::vector<TInventoryDocument> documents,
                          std::vector<std::string> completedFiles) {
        const bool hasIdentity = environment_.HasIdentity();
        TRunSummary summary;
        summary.origin = source_.origin;
        summary.machine = DescribeMachine(*source_.collected, *answer.results.front());
        summary.directory = options_.directory;
        summary.documents = std::move(documents);
        summary.completedFiles = std::move(completedFiles);
        summary.earlierFiles = ListEarlierDocuments(GetTarget(), hasIdentity);
        summary.credential = DescribeCredential(answer, hasIdentity, options_.entityService.has_value());
        summary.outcome = source_.outcome;
        return summary;
    }

    TStepClock clock_;
    const TCollectOptions& options_;
    TCollectOutputs outputs_;
    TLogSinks sinks_;
    TRunEnvironment environment_;
    std::optional<TSendingRun> sending_;  // absent: nothing is to be sent
    std::vector<TOutgoingFile> outgoing_;
    TNamespaceSource source_;
    std::optional<TKeptRun> kept_;
    std::optional<TRunSnapshot> snapshot_;
    TOutputFiles files_;  // the files besides the documents; they refer to the members above
};

}  // namespace

EExitStatus RunCollect(const TCollectOptions& options, std::ostream& out) {
    return TCollectRun(options).Run(out);
}

}  // namespace NVORHOST
