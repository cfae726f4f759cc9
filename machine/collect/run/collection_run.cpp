#include "machine/collect/run/collection_run.h"

#include "host/vor_exception.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/run/essential_sources.h"
#include "machine/collect/run/source_outcomes.h"
#include "machine/collect/run/value_search.h"
#include "machine/system/access_log.h"

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>
#include <unordered_set>

namespace NVORHOST {
namespace {

std::size_t CountInstances(const TMemoryNamespace& target, const TCollector& collector) {
    std::size_t count = 0;
    for (const IClassDeclaration* declaration : collector.fills) {
        count += target.FindClass(declaration->GetName())->GetInstances().size();
    }
    return count;
}

// Returns the exception of a collector as one line; nullopt if it does not throw.
std::optional<std::string> RunCollector(const TCollector& collector, TCollection& collection) {
    try {
        collector.collect(collection);
        return std::nullopt;
    } catch (const TResourcesExhausted&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const NKELVOR20::TVORException& error) {
        return "host status " + std::to_string(error.GetStatusCode().GetCode()) + ": " + error.what();
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::vector<std::string> PathsThatEnded(const std::vector<TAccessLog::TAccess>& accesses,
                                        EReadStatus status) {
    std::vector<std::string> paths;
    std::unordered_set<std::string_view> seen;
    for (const TAccessLog::TAccess& access : accesses) {
        if (access.status == status && seen.insert(access.path).second) {
            paths.push_back(access.path);
        }
    }
    return paths;
}

std::optional<std::string> FindEssentialFailure(const std::vector<TAccessLog::TAccess>& accesses) {
    for (const TAccessLog::TAccess& access : accesses) {
        if (IsInputError(access.cause) && IsEssentialSource(access.path)) {
            return access.path + ": " + std::generic_category().message(access.cause);
        }
    }
    return std::nullopt;
}

void SetClassSources(const TCollector& collector, const TSourceOutcomes& outcomes, TMemoryNamespace& target) {
    for (const IClassDeclaration* declaration : collector.fills) {
        const auto filled = target.FindClass(declaration->GetName());
        if (filled->GetInstances().empty()) {
            SetClassSource(*declaration, outcomes, *filled);
        }
    }
}

}  // namespace

void DeclareClasses(TMemoryNamespace& target, std::span<const TCollector> collectors) {
    for (const TCollector& collector : collectors) {
        for (const IClassDeclaration* declaration : collector.fills) {
            if (!target.FindClass(declaration->GetName())) {
                target.AddClass(std::string(declaration->GetName()), declaration->GetProperties());
            }
        }
    }
}

std::vector<TCollectReport> CollectAll(const TCollectContext& context) {
    return CollectAll(context, ChooseCollectors({}));
}

struct TCollectorRuns::TParts {
    explicit TParts(const TCollectContext& givenContext)
        : context(givenContext), files(context.files, context.withSources), collection(context, files) {
        if (context.withSources && context.unanswered != nullptr) {
            std::ranges::for_each(*context.unanswered,
                                  [this](const std::string& path) { outcomes.AddTimedOut(path); });
        }
    }

    const TCollectContext& context;
    TAccessLog files;
    TCollection collection;
    TSourceOutcomes outcomes;  // of all collectors so far, because sources are shared; empty without sources
};

TCollectorRuns::TCollectorRuns(const TCollectContext& context, std::span<const TCollector> collectors)
    : parts_(std::make_unique<TParts>(context)) {
    DeclareClasses(context.target, collectors);
}

TCollectorRuns::~TCollectorRuns() = default;

TCollectReport TCollectorRuns::Run(const TCollector& collector) {
    const auto start = std::chrono::steady_clock::now();
    TMemoryNamespace& target = parts_->context.target;
    const std::size_t instancesBefore = CountInstances(target, collector);
    TCollectReport report;
    report.collector = collector.name;
    report.failure = RunCollector(collector, parts_->collection);
    const auto accesses = parts_->files.TakeAccesses();
    report.deniedSources = PathsThatEnded(accesses, EReadStatus::denied);
    report.failedSources = PathsThatEnded(accesses, EReadStatus::failed);
    report.timedOutSources = PathsThatEnded(accesses, EReadStatus::timedOut);
    report.asleepSources = PathsThatEnded(accesses, EReadStatus::asleep);
    report.essentialFailure = FindEssentialFailure(accesses);
    if (parts_->context.withSources) {
        parts_->outcomes.Add(accesses);
        report.values = SetValueSources(parts_->collection, parts_->outcomes);
        if (parts_->context.keepsSources) {
            SetClassSources(collector, parts_->outcomes, target);
        }
    }
    report.notes = parts_->collection.TakeNotes();
    report.warnings = parts_->collection.TakeWarnings();
    report.instances = CountInstances(target, collector) - instancesBefore;
    report.replacedBytes = parts_->collection.TakeReplacedBytes();
    report.duration = std::chrono::steady_clock::now() - start;
    return report;
}

std::vector<TCollectReport> CollectAll(const TCollectContext& context,
                                       std::span<const TCollector> collectors) {
    TCollectorRuns runs(context, collectors);
    std::vector<TCollectReport> reports;
    for (const TCollector& collector : collectors) {
        reports.push_back(runs.Run(collector));
    }
    return reports;
}

}  // namespace NVORHOST
