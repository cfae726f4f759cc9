#include "vorhost/cli/namespace_source.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include <boost/make_shared.hpp>

#include "host/os_specific.h"
#include "vorhost/cimxml/load.h"
#include "vorhost/cli/run_failure.h"
#include "vorhost/collect/collector.h"
#include "vorhost/system/captured_system_calls.h"
#include "vorhost/system/live_system_calls.h"
#include "vorhost/system/rooted_files.h"

namespace NVORHOST {
namespace {

constexpr char liveRoot[] = "/";

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

void CollectMachine(const TSourceOptions& options, TNamespaceSource& source) {
    const bool isLive = options.sysroot == liveRoot;
    source.origin = isLive ? "this machine" : "tree " + options.sysroot;
    std::error_code ignored;
    if (!std::filesystem::is_directory(options.sysroot, ignored)) {
        throw TRunFailure("cannot collect from " + options.sysroot + ": not a directory");
    }
    const TRootedFiles files(options.sysroot);
    const auto calls = MakeSystemCalls(isLive, files);
    TCollectContext context{files, *calls, *source.collected, NKELVOR20::TOSSpecific::GetLocalTime()};
    for (const TCollectReport& report : CollectAll(context)) {
        source.failures += report.failure.empty() ? 0U : 1U;
    }
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
