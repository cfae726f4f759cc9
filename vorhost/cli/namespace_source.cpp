#include "vorhost/cli/namespace_source.h"

#include "vorhost/cimxml/load.h"
#include "vorhost/cli/machine_door.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/collect/collector.h"
#include "vorhost/names/hardware_database.h"
#include "vorhost/services/core_logger.h"

#include <boost/make_shared.hpp>

#include <set>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr int warningLevel = 3;

TNamespaceSource LoadFile(const std::string& path) {
    TNamespaceSource source;
    source.collected = boost::make_shared<TMemoryNamespace>();
    source.origin = "file " + path;
    try {
        LoadNamespace(path, *source.collected);
    } catch (const TCimXmlError& error) {
        throw TRunFailure(error.what());
    }
    return source;
}

void LogWarning(std::string_view collector, const std::string& line) {
    TCoreLogger::Get().Log(warningLevel, "vorhost-" + std::string(collector) + ": " + line);
}

// `denied` and `failed` grow by what the report adds to them: several collectors may have asked for one
// source.
void LogReport(const TCollectReport& report, std::set<std::string>& denied, std::set<std::string>& failed) {
    if (!report.failure.empty()) {
        LogWarning(report.collector, "failed: " + report.failure);
    }
    for (const std::string& source : report.deniedSources) {
        if (denied.insert(source).second) {
            LogWarning(report.collector, "may not read " + source);
        }
    }
    for (const std::string& source : report.failedSources) {
        if (failed.insert(source).second) {
            LogWarning(report.collector, "cannot read " + source);
        }
    }
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

}  // namespace

TNamespaceSource CollectNamespace(const ISystemFiles& files, const ISystemCalls& calls,
                                  const std::optional<NKELVOR20::TCIMDateTime>& localTime,
                                  const TCollectorChoice& choice) {
    TNamespaceSource source;
    source.collected = boost::make_shared<TMemoryNamespace>();
    const THardwareDatabase names;
    const TCollectContext context{files, calls, *source.collected, localTime, &names};
    std::set<std::string> denied;
    std::set<std::string> failed;
    for (const TCollectReport& report : CollectAll(context, ChooseCollectors(choice))) {
        LogReport(report, denied, failed);
        source.failedCollectors += report.failure.empty() ? 0U : 1U;
        source.replacedBytes += report.replacedBytes;
        source.warnings.insert(source.warnings.end(), report.warnings.begin(), report.warnings.end());
    }
    source.deniedSources.assign(denied.begin(), denied.end());
    source.failedSources.assign(failed.begin(), failed.end());
    return source;
}

TNamespaceSource ObtainNamespace(const TSourceOptions& options) {
    if (!options.namespaceFile.empty()) {
        return LoadFile(options.namespaceFile);
    }
    const TMachineDoor machine(options);
    TNamespaceSource source =
        CollectNamespace(machine.GetFiles(), machine.GetCalls(), machine.GetLocalTime(), options.collectors);
    source.origin = machine.Describe();
    return source;
}

}  // namespace NVORHOST
