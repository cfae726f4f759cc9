#include "program/namespace_source.h"

#include "host/log_levels.h"
#include "machine/supervision/machine_door.h"
#include "machine/supervision/supervised_collection.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <boost/make_shared.hpp>

#include <set>
#include <string_view>

namespace NVORHOST {
namespace {

TNamespaceSource LoadFile(const std::string& path) {
    TNamespaceSource source;
    source.collected = boost::make_shared<TMemoryNamespace>();
    const bool isStandardInput = path == "-";
    source.origin = isStandardInput ? "standard input" : "file " + path;
    try {
        LoadNamespace(isStandardInput ? "/dev/stdin" : path, *source.collected);
    } catch (const TDocumentError& error) {
        throw TRunFailure(error.what());
    }
    return source;
}

void LogWarning(std::string_view collector, const std::string& line) {
    TCoreLogger::Get().Log(NKELVOR20::diagnosticLevel, "noxinfo-" + std::string(collector) + ": " + line);
}

// Logs the reports of collectors. Several collectors may report the same source; it is logged only once.
class TReportLog {
  public:
    void Log(const TCollectReport& report) {
        if (report.failure) {
            LogWarning(report.collector, "failed: " + *report.failure);
        }
        LogSources(report, report.deniedSources, "permission denied: ", denied_);
        LogSources(report, report.failedSources, "cannot read ", failed_);
        LogSources(report, report.timedOutSources, "no answer in time: ", timedOut_);
        LogSources(report, report.asleepSources, "the device is asleep: ", asleep_);
        for (const std::string& note : report.notes) {
            LogWarning(report.collector, note);
        }
        for (const std::string& warning : report.warnings) {
            LogWarning(report.collector, warning);
        }
        if (report.replacedBytes != 0) {
            LogWarning(report.collector, "invalid UTF-8 in device text; bytes replaced by U+FFFD: " +
                                             std::to_string(report.replacedBytes));
        }
    }

  private:
    using TSources = std::set<std::string>;

    static void LogSources(const TCollectReport& report, const std::vector<std::string>& sources,
                           const std::string& label, TSources& logged) {
        for (const std::string& source : sources) {
            if (logged.insert(source).second) {
                LogWarning(report.collector, label + source);
            }
        }
    }

    TSources denied_;
    TSources failed_;
    TSources timedOut_;
    TSources asleep_;
};

TNamespaceSource MakeSource(const TSupervisedCollection& collection, const TSourceOptions& options) {
    TReportLog log;
    for (const TCollectReport& report : collection.reports) {
        log.Log(report);
    }
    TNamespaceSource source;
    source.origin = DescribeMachine(options.machine);
    source.outcome = CombineReports(collection.reports);
    source.localTime = collection.localTime;
    return source;
}

}  // namespace

TNamespaceSource ObtainNamespace(const TSourceOptions& options) {
    if (options.namespaceFile) {
        return LoadFile(*options.namespaceFile);
    }
    const auto collected = boost::make_shared<TMemoryNamespace>();
    TNamespaceSource source = MakeSource(CollectSupervised(options.machine, *collected), options);
    source.collected = collected;
    return source;
}

TNamespaceSource RecordMachine(const TSourceOptions& options, TRecordedMachine& machine) {
    return MakeSource(RecordSupervised(options.machine, machine), options);
}

}  // namespace NVORHOST
