#include "vorhost/cli/namespace_source.h"

#include "host/os_specific.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/collect/collector.h"
#include "vorhost/names/hardware_database.h"
#include "vorhost/services/core_logger.h"
#include "vorhost/system/captured_system_calls.h"
#include "vorhost/system/live_system_calls.h"
#include "vorhost/system/rooted_files.h"

#include <boost/make_shared.hpp>

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char liveRoot[] = "/";
constexpr int warningLevel = 3;

void LoadFile(const std::string& path, TNamespaceSource& source) {
    source.origin = "file " + path;
    try {
        LoadNamespace(path, *source.collected);
    } catch (const TCimXmlError& error) {
        throw TRunFailure(error.what());
    }
}

std::unique_ptr<ISystemCalls> MakeSystemCalls(bool isLive, const ISystemFiles& files) {
    if (isLive) {
        return std::make_unique<TLiveSystemCalls>();
    }
    return std::make_unique<TCapturedSystemCalls>(files);
}

void LogWarning(std::string_view collector, const std::string& line) {
    TCoreLogger::Get().Log(warningLevel, "vorhost-" + std::string(collector) + ": " + line);
}

void LogReport(const TCollectReport& report) {
    if (!report.failure.empty()) {
        LogWarning(report.collector, "failed: " + report.failure);
    }
    for (const std::string& source : report.deniedSources) {
        LogWarning(report.collector, "may not read " + source);
    }
    for (const std::string& source : report.failedSources) {
        LogWarning(report.collector, "cannot read " + source);
    }
    for (const std::string& note : report.notes) {
        LogWarning(report.collector, note);
    }
}

// A captured tree does not tell the zone of its machine, so its times are local only when the user says when
// the collection is.
std::optional<TCIMDateTime> CollectionTime(const TSourceOptions& options, bool isLive) {
    return isLive ? NKELVOR20::TOSSpecific::GetLocalTime() : options.localTime;
}

void CollectMachine(const TSourceOptions& options, TNamespaceSource& source) {
    const bool isLive = options.sysroot == liveRoot;
    source.origin = isLive ? "this machine" : "tree " + options.sysroot;
    std::error_code ignored;
    if (!std::filesystem::is_directory(options.sysroot, ignored)) {
        throw TRunFailure("cannot collect from " + options.sysroot + ": not a directory");
    }
    const TRootedFiles files(options.sysroot);
    const auto calls = MakeSystemCalls(isLive, files);
    const THardwareDatabase names;
    const TCollectContext context{files, *calls, *source.collected, CollectionTime(options, isLive), &names};
    std::set<std::string> denied;
    for (const TCollectReport& report : CollectAll(context)) {
        LogReport(report);
        source.failedCollectors += report.failure.empty() ? 0U : 1U;
        denied.insert(report.deniedSources.begin(), report.deniedSources.end());
    }
    source.deniedSources.assign(denied.begin(), denied.end());
}

}  // namespace

TNamespaceSource ObtainNamespace(const TSourceOptions& options) {
    TNamespaceSource source;
    source.collected = boost::make_shared<TMemoryNamespace>();
    if (options.namespaceFile.empty()) {
        CollectMachine(options, source);
    } else {
        LoadFile(options.namespaceFile, source);
    }
    return source;
}

}  // namespace NVORHOST
