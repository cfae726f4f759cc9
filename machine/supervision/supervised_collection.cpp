#include "machine/supervision/supervised_collection.h"

#include "machine/supervision/collecting_process.h"
#include "machine/supervision/collector_message.h"
#include "vorhost/run/run_failure.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace NVORHOST {
namespace {

using TClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// An access or a collector gets 1/32 or 1/8 of the remaining time, so that time remains for the others, no
// matter how many sources do not answer.
constexpr int shareOfAccess = 32;
constexpr int shareOfCollector = 8;
constexpr milliseconds longestAccess(1000);  // applies even if the deadline is hours away
constexpr milliseconds longestCollector(5000);
constexpr milliseconds shortestWait(5);
constexpr milliseconds grace(500);  // past the deadline, for a process that is not blocked in an access
constexpr std::size_t maxPathsOfCollector = 3;
constexpr std::size_t maxProcesses = 64;

milliseconds Share(TClock::duration left, int share, milliseconds longest) {
    const auto part = std::chrono::duration_cast<milliseconds>(left) / share;
    return std::clamp(part, shortestWait, longest);
}

std::string DescribeSeconds(milliseconds time) {
    std::string text = std::to_string(time.count() / 1000);
    if (const auto rest = time.count() % 1000; rest != 0) {
        std::string digits = std::to_string(1000 + rest).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += "." + digits;
    }
    return text + " s";
}

// The access and the collector that the newest process is working on, and since when.
struct TProgress {
    std::uint32_t step = 0;
    TClock::time_point stepSince = TClock::now();
    std::optional<std::uint32_t> collector;
    TClock::time_point collectorSince = TClock::now();

    void Update(const TAccessPlace& place) {
        const auto now = TClock::now();
        if (const auto current = place.GetStep(); current != step) {
            step = current;
            stepSince = now;
        }
        if (place.HasTask() && collector != place.GetTask()) {
            collector = place.GetTask();
            collectorSince = now;
        }
    }
};

class TSupervision {
  public:
    /// `take` receives the result of each collector that counts, in the order of the collectors. Before the
    /// results of other processes than the first are taken, `preview`, if not null, receives all of them.
    using TTake = std::function<TCollectReport(const TCollector&, TMessageReader&)>;
    using TPreview = std::function<void(const TCollector&, TMessageReader&)>;

    TSupervision(TCollectionTask task, TTake take, TPreview preview)
        : task_(std::move(task)), take_(std::move(take)), preview_(std::move(preview)) {
        if (task_.options.deadline) {
            end_ = TClock::now() + *task_.options.deadline;
        }
    }

    TSupervisedCollection Run() {
        Start();
        while (!IsDone() && !IsOver()) {
            Wait();
            RestartIfStalled();
        }
        if (!IsDone()) {
            StopWaiting();
        }
        TakeRest();
        return std::move(collected_);
    }

  private:
    struct TWorker {
        explicit TWorker(const TCollectionTask& task) : process(task) {}

        TCollectingProcess process;
        std::map<std::uint64_t, std::string>
            results;  // by index of the collector; empty for the first worker
        bool isDone = false;
    };

    bool IsFirst(const TWorker& worker) const { return &worker == workers_.front().get(); }
    bool IsDone() const { return workers_.front()->isDone; }

    bool IsOver() {
        if (!end_ || TClock::now() < *end_) {
            return false;
        }
        const TWorker& newest = *workers_.back();
        return newest.isDone || TClock::now() >= *end_ + grace || newest.process.GetPlace().FindPath();
    }

    void Start() {
        workers_.push_back(std::make_unique<TWorker>(task_));
        progress_ = {};
    }

    void Wait() {
        std::vector<pollfd> readable;
        std::vector<TWorker*> readers;
        for (const auto& worker : workers_) {
            if (worker->process.GetDescriptor() >= 0) {
                readable.push_back({worker->process.GetDescriptor(), POLLIN, 0});
                readers.push_back(worker.get());
            }
        }
        const int count = ::poll(readable.data(), readable.size(), TimeToWait());
        for (std::size_t i = 0; count > 0 && i < readable.size(); ++i) {
            if (readable[i].revents != 0) {
                Read(*readers[i]);
            }
        }
    }

    int TimeToWait() const {
        if (!end_) {
            return -1;
        }
        const auto left = *end_ - TClock::now();
        return static_cast<int>(Share(left, shareOfAccess, longestAccess).count());
    }

    void Read(TWorker& worker) {
        for (TCollectingProcess::TMessage& message : worker.process.ReadMessages()) {
            switch (message.kind) {
                case ECollectionMessage::opened:
                    task_.localTime = NKELVOR20::TCIMDateTime::FromText(message.bytes);
                    break;
                case ECollectionMessage::result:
                    TakeResult(worker, std::move(message.bytes));
                    break;
                case ECollectionMessage::failed:
                    throw TRunFailure(message.bytes);
                case ECollectionMessage::done:
                    worker.isDone = true;
                    break;
            }
        }
        if (worker.process.GetDescriptor() < 0 && !worker.isDone) {
            throw TRunFailure("the process that collects from " + task_.options.sysroot + " " +
                              worker.process.DescribeEnd());
        }
    }

    // Results of the first process arrive in order and are never replaced: it runs without refused paths.
    void TakeResult(TWorker& worker, std::string bytes) {
        TMessageReader message(bytes);
        const std::uint64_t collector = message.ReadNumber();
        if (IsFirst(worker)) {
            collected_.reports.push_back(take_(task_.collectors[collector], message));
        } else {
            worker.results[collector] = std::move(bytes);
        }
    }

    void RestartIfStalled() {
        TWorker& newest = *workers_.back();
        if (!end_ || newest.isDone || workers_.size() == maxProcesses) {
            return;
        }
        const TAccessPlace& place = newest.process.GetPlace();
        progress_.Update(place);
        if (!progress_.collector || *progress_.collector + std::size_t{1} > task_.collectors.size()) {
            return;
        }
        const auto now = TClock::now();
        const auto left = *end_ - now;
        const auto path = place.FindPath();
        if (path && now - progress_.stepSince >= Share(left, shareOfAccess, longestAccess)) {
            RestartWithoutPath(*path, *progress_.collector);
        } else if (now - progress_.collectorSince >= Share(left, shareOfCollector, longestCollector)) {
            RestartAfter(*progress_.collector);
        }
    }

    void RestartWithoutPath(const std::string& path, std::size_t collector) {
        task_.unanswered.insert(path);
        if (++stalls_[collector] > maxPathsOfCollector) {
            RestartAfter(collector);
        } else {
            task_.first = collector;
            Start();
        }
    }

    void RestartAfter(std::size_t collector) {
        if (collector + 1 < task_.collectors.size()) {
            task_.first = collector + 1;
            Start();
        }
    }

    // Records the paths that processes are waiting for, before the processes are killed.
    void StopWaiting() {
        for (const auto& worker : workers_) {
            const TAccessPlace& place = worker->process.GetPlace();
            if (!worker->isDone && place.HasTask()) {
                pendingPaths_.emplace(place.GetTask(), place.FindPath());
            }
        }
        if (!workers_.front()->process.GetPlace().HasTask()) {
            FailToOpen(workers_.front()->process.GetPlace().FindPath());
        }
        if (preview_) {
            ForEachLaterResult(preview_);
        }
    }

    [[noreturn]] void FailToOpen(const std::optional<std::string>& path) {
        workers_.clear();
        throw TRunFailure("cannot collect from " + task_.options.sysroot + ": no answer within " +
                          DescribeSeconds(*task_.options.deadline) + (path ? " from " + *path : ""));
    }

    template <typename TVisit>
    void ForEachLaterResult(const TVisit& visit) {
        for (std::size_t i = 1; i < workers_.size(); ++i) {
            for (auto& [collector, bytes] : workers_[i]->results) {
                TMessageReader message(bytes);
                (void)message.ReadNumber();
                visit(task_.collectors[collector], message);
            }
        }
    }

    void TakeRest() {
        while (collected_.reports.size() < task_.collectors.size()) {
            collected_.reports.push_back(TakeBest(collected_.reports.size()));
        }
        collected_.localTime = task_.localTime;
    }

    TCollectReport TakeBest(std::size_t collector) {
        for (const auto& worker : workers_) {
            const auto found = worker->results.find(collector);
            if (found != worker->results.end()) {
                TMessageReader message(found->second);
                (void)message.ReadNumber();
                return take_(task_.collectors[collector], message);
            }
        }
        return ReportNothing(collector);
    }

    TCollectReport ReportNothing(std::size_t collector) {
        TCollectReport report;
        report.collector = task_.collectors[collector].name;
        report.failure = "not finished within " + DescribeSeconds(*task_.options.deadline);
        const auto path = pendingPaths_.find(collector);
        if (path != pendingPaths_.end() && path->second) {
            report.timedOutSources.push_back(*path->second);
        }
        return report;
    }

    TCollectionTask task_;
    TTake take_;
    TPreview preview_;
    std::optional<TClock::time_point> end_;          // absent without a deadline
    std::vector<std::unique_ptr<TWorker>> workers_;  // each refuses the paths that earlier ones wait for
    TProgress progress_;                             // progress of the last worker
    std::map<std::size_t, std::size_t> stalls_;      // number of stalled paths by collector
    // By collector, recorded at the deadline; absent if the process was between two accesses.
    std::map<std::size_t, std::optional<std::string>> pendingPaths_;
    TSupervisedCollection collected_;
};

TCollectionTask MakeTask(const TMachineOptions& options, ECollects collects) {
    TCollectionTask task;
    task.options = options;
    task.collects = collects;
    task.collectors = ChooseCollectors(options.collectors);
    task.collectors.insert(task.collectors.end(), options.extraCollectors.begin(),
                           options.extraCollectors.end());
    return task;
}

}  // namespace

TSupervisedCollection CollectSupervised(const TMachineOptions& options, TMemoryNamespace& target) {
    const TCollectionTask task = MakeTask(options, ECollects::instances);
    DeclareClasses(target, task.collectors);
    const auto take = [&target](const TCollector& collector, TMessageReader& message) {
        TCollectReport report = ReadReport(collector, message);
        ReadInstances(collector, message, target);
        return report;
    };
    return TSupervision(task, take, nullptr).Run();
}

TSupervisedCollection RecordSupervised(const TMachineOptions& options, TRecordedMachine& machine) {
    const auto take = [&machine](const TCollector& collector, TMessageReader& message) {
        TCollectReport report = ReadReport(collector, message);
        AddLog(ReadMachineLog(message), machine);
        return report;
    };
    // A process logs an answer only once, with the collector that asked first. If the result of that
    // collector is taken from another process, the answer is still needed by later collectors of this
    // process.
    const auto preview = [&machine](const TCollector& collector, TMessageReader& message) {
        (void)ReadReport(collector, message);
        AddResponses(ReadMachineLog(message), machine);
    };
    return TSupervision(MakeTask(options, ECollects::logs), take, preview).Run();
}

}  // namespace NVORHOST
