#include "vorhost/cli/machine_door.h"

#include "host/os_specific.h"
#include "vorhost/cli/run_failure.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char liveRoot[] = "/";

// Collectors take what they cannot read for missing: below a root that cannot be opened, everything.
void RequireOpen(const TRootedFiles& files) {
    if (files.GetRootError() != 0) {
        throw TRunFailure("cannot collect from " + files.GetRoot() + ": " +
                          std::generic_category().message(files.GetRootError()));
    }
}

// Without its answers, a tree would be another machine.
void RequireAnswers(const TRootedFiles& files, const TCapturedSystemCalls& calls) {
    if (!calls.GetAnswersError().empty()) {
        throw TRunFailure("cannot collect from " + files.GetRoot() + ": " + calls.GetAnswersError());
    }
}

}  // namespace

void RequireProcFileSystem() {
    if (::access("/proc/self/fd", R_OK | X_OK) != 0) {
        throw TRunFailure("cannot run where /proc is missing: mount the process file system there");
    }
}

TMachineDoor::TMachineDoor(const TSourceOptions& options)
    : isLive_(options.sysroot == liveRoot), localTime_(options.localTime), rootedFiles_(options.sysroot) {
    std::error_code ignored;  // whatever it is, there is no directory
    if (!std::filesystem::is_directory(options.sysroot, ignored)) {
        throw TRunFailure("cannot collect from " + options.sysroot + ": not a directory");
    }
    RequireOpen(rootedFiles_);
    if (!isLive_) {
        capturedCalls_.emplace(rootedFiles_);
        RequireAnswers(rootedFiles_, *capturedCalls_);
        capturedFiles_.emplace(rootedFiles_, capturedCalls_->GetAnswers());
    }
}

std::string TMachineDoor::Describe() const {
    return isLive_ ? "this machine" : "tree " + rootedFiles_.GetRoot();
}

const ISystemFiles& TMachineDoor::GetFiles() const {
    return isLive_ ? static_cast<const ISystemFiles&>(rootedFiles_) : *capturedFiles_;
}

const ISystemCalls& TMachineDoor::GetCalls() const {
    return isLive_ ? static_cast<const ISystemCalls&>(liveCalls_) : *capturedCalls_;
}

std::optional<NKELVOR20::TCIMDateTime> TMachineDoor::GetLocalTime() const {
    if (isLive_) {
        return NKELVOR20::TOSSpecific::GetLocalTime();
    }
    if (localTime_) {
        return localTime_;
    }
    return NKELVOR20::TCIMDateTime::FromText(capturedCalls_->GetAnswers().localTime.value_or(""));
}

}  // namespace NVORHOST
