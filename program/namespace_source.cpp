#include "program/namespace_source.h"

#include "machine/supervision/machine_door.h"
#include "machine/supervision/supervised_collection.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr int warningLevel = 3;

TNamespaceSource LoadFile(const std::string& path) {
    TNamespaceSource source;
    source.collected = boost::make_shared<TMemoryNamespace>();
    const bool isStandardInput = path == "-";
    source.origin = isStandardInput ? "standard input" : "file " + path;
    try {
        LoadNamespace(isStandardInput ? "/dev/stdin" : path, *source.collected);
    } catch (const TCimXmlError& error) {
        throw TRunFailure(error.what());
    }
    return source;
}

void LogWarning(std::string_view collector, const std::string& line) {
    TCoreLogger::Get().Log(warningLevel, "noxinfo-" + std::string(collector) + ": " + line);
}

// How often each source was told of does not matter: several collectors may have asked for it.
struct TToldSources {
    std::set<std::string> denied;
    std::set<std::string> failed;
    std::set<std::string> timedOut;
};

void LogSources(const TCollectReport& report, const std::vector<std::string>& sources,
                const std::string& what, std::set<std::string>& told) {
    for (const std::string& source : sources) {
        if (told.insert(source).second) {
            LogWarning(report.collector, what + source);
        }
    }
}

void LogReport(const TCollectReport& report, TToldSources& told) {
    if (!report.failure.empty()) {
        LogWarning(report.collector, "failed: " + report.failure);
    }
    LogSources(report, report.deniedSources, "may not read ", told.denied);
    LogSources(report, report.failedSources, "cannot read ", told.failed);
    LogSources(report, report.timedOutSources, "no answer in time from ", told.timedOut);
    for (const std::string& note : report.notes) {
        LogWarning(report.collector, note);
    }
    for (const std::string& warning : report.warnings) {
        LogWarning(report.collector, warning);
    }
    if (report.replacedBytes != 0) {
        LogWarning(report.collector,
                   "bytes that are no characters, shown as U+FFFD: " + std::to_string(report.replacedBytes));
    }
}

// Each process that reads a malformed source warns of it.
void AddNew(const std::vector<std::string>& lines, std::vector<std::string>& all) {
    std::ranges::copy_if(lines, std::back_inserter(all), [&all](const std::string& line) {
        return std::ranges::find(all, line) == all.end();
    });
}

TNamespaceSource Summarise(const TSupervisedCollection& collection, const TSourceOptions& options) {
    TNamespaceSource source;
    TToldSources told;
    for (const TCollectReport& report : collection.reports) {
        LogReport(report, told);
        source.gaps.failedCollectors += report.failure.empty() ? 0U : 1U;
        source.replacedBytes += report.replacedBytes;
        AddNew(report.warnings, source.gaps.warnings);
    }
    source.gaps.deniedSources.assign(told.denied.begin(), told.denied.end());
    source.gaps.failedSources.assign(told.failed.begin(), told.failed.end());
    source.gaps.timedOutSources.assign(told.timedOut.begin(), told.timedOut.end());
    source.origin = DescribeMachine(options.machine);
    source.localTime = collection.localTime;
    return source;
}

}  // namespace

TNamespaceSource ObtainNamespace(const TSourceOptions& options) {
    if (!options.namespaceFile.empty()) {
        return LoadFile(options.namespaceFile);
    }
    const auto collected = boost::make_shared<TMemoryNamespace>();
    TNamespaceSource source = Summarise(CollectSupervised(options.machine, *collected), options);
    source.collected = collected;
    return source;
}

TNamespaceSource RecordMachine(const TSourceOptions& options, TRecordedMachine& machine) {
    return Summarise(RecordSupervised(options.machine, machine), options);
}

}  // namespace NVORHOST
