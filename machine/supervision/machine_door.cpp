#include "machine/supervision/machine_door.h"

#include "host/os_specific.h"
#include "machine/replay/capture_answers.h"
#include "vorhost/run/run_failure.h"

#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char liveRoot[] = "/";

[[noreturn]] void Refuse(const std::filesystem::path& root, const std::string& cause) {
    throw TRunFailure("cannot collect from " + root.string() + ": " + cause);
}

void RequireDirectory(const std::filesystem::path& root) {
    std::error_code ignored;  // any error means that the directory is missing
    if (std::filesystem::is_directory(root, ignored)) {
        return;
    }
    if (!std::filesystem::exists(root, ignored)) {
        Refuse(root, "no such directory");
    }
    Refuse(root, "not a directory; unpack a capture first: mkdir DIR && tar -xJf FILE -C DIR");
}

bool IsMachine(const std::filesystem::path& root) {
    std::error_code ignored;  // an entry that cannot be examined counts as missing
    return std::filesystem::exists(root / std::string(captureAnswersPath.substr(1)), ignored) ||
           std::filesystem::is_directory(root / "proc", ignored) ||
           std::filesystem::is_directory(root / "sys", ignored);
}

// Finds the tree of a machine in a subdirectory or in the parent directory, for a hint.
std::optional<std::filesystem::path> FindMachineNear(const std::filesystem::path& root) {
    std::error_code error;
    std::set<std::filesystem::path> inside;
    for (std::filesystem::directory_iterator entry(root, error), end; !error && entry != end;
         entry.increment(error)) {
        if (IsMachine(entry->path())) {
            inside.insert(entry->path());
        }
    }
    if (!inside.empty()) {
        return inside.begin()->lexically_normal();
    }
    const auto parent = std::filesystem::canonical(root, error).parent_path();
    return !error && parent != liveRoot && IsMachine(parent) ? std::optional(parent) : std::nullopt;
}

// In any other directory, collectors would find every source missing and produce an empty inventory.
void RequireMachine(const std::filesystem::path& root) {
    if (IsMachine(root)) {
        return;
    }
    const auto near = FindMachineNear(root);
    Refuse(root, "not the tree of a machine: it has neither proc nor sys nor " +
                     std::string(captureAnswersPath.substr(1)) +
                     (near ? "; did you mean " + near->string() + "?" : ""));
}

// Below a root that cannot be opened, collectors would find every source missing.
void RequireOpen(const TRootedFiles& files) {
    if (files.GetRootError() != 0) {
        throw TRunFailure("cannot collect from " + files.GetRoot() + ": " +
                          std::generic_category().message(files.GetRootError()));
    }
}

// Without the recorded answers, the tree would produce the inventory of a different machine.
void RequireAnswers(const TRootedFiles& files, const TReplaySystemCalls& calls) {
    if (const auto error = calls.FindAnswersError()) {
        throw TRunFailure("cannot collect from " + files.GetRoot() + ": " + *error);
    }
}

}  // namespace

void RequireProcFileSystem() {
    if (::access("/proc/self/fd", R_OK | X_OK) != 0) {
        throw TRunFailure("/proc is missing: mount the process file system there");
    }
}

bool IsLiveMachine(const TMachineOptions& options) {
    return options.sysroot == liveRoot;
}

bool IsMachineRoot(const std::string& directory) {
    return IsMachine(directory);
}

std::string DescribeMachine(const TMachineOptions& options) {
    return IsLiveMachine(options) ? "this machine" : "tree " + options.sysroot;
}

TMachineDoor::TMachineDoor(const TMachineOptions& options)
    : isLive_(IsLiveMachine(options)),
      localTime_(options.localTime),
      rootedFiles_(options.sysroot),
      guardedFiles_(rootedFiles_),
      isGuarded_(!options.wakes) {
    RequireDirectory(options.sysroot);
    RequireOpen(rootedFiles_);
    if (!isLive_) {
        RequireMachine(options.sysroot);
        capturedCalls_.emplace(rootedFiles_);
        RequireAnswers(rootedFiles_, *capturedCalls_);
        isGuarded_ = isGuarded_ && !capturedCalls_->HasAnswers();
        capturedFiles_.emplace(GetRootedFiles(), capturedCalls_->GetAnswers());
    }
}

const ISystemFiles& TMachineDoor::GetRootedFiles() const {
    return isGuarded_ ? static_cast<const ISystemFiles&>(guardedFiles_) : rootedFiles_;
}

const ISystemFiles& TMachineDoor::GetFiles() const {
    return isLive_ ? GetRootedFiles() : *capturedFiles_;
}

const ISystemCalls& TMachineDoor::GetCalls() const {
    return isLive_ ? static_cast<const ISystemCalls&>(liveCalls_) : *capturedCalls_;
}

std::optional<NKELVOR20::TCIMDateTime> TMachineDoor::FindLocalTime() const {
    if (isLive_) {
        return NKELVOR20::TOSSpecific::GetLocalTime();
    }
    if (localTime_) {
        return localTime_;
    }
    return NKELVOR20::TCIMDateTime::FromText(capturedCalls_->GetAnswers().localTime.value_or(""));
}

}  // namespace NVORHOST
