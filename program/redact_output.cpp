#include "program/redact_output.h"

#include "vorhost/run/output_file.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

std::string FailureOf(const std::string& path) {
    return "cannot write " + path;
}

}  // namespace

TRedactOutput::~TRedactOutput() {
    folders_.clear();
    for (; !made_.empty(); made_.pop_back()) {
        (void)::rmdir(made_.back().c_str());  // fails for a directory that has received files
    }
}

void TRedactOutput::Write(const std::string& relative, const std::function<void(std::ostream&)>& write) {
    const fs::path path = fs::path(directory_) / relative;
    const std::string name = path.filename().string();
    TFolder& folder = GetFolder(path.parent_path().string());
    RequireFree(folder, name);
    TFileDescriptor file = folder.workplace.OpenFile(name, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.IsOpen() && errno == EEXIST) {
        throw TRunFailure(FailureOf(path.string()) + ": two sources have this name");
    }
    WriteToDescriptor(file, path.string(), write);
    folder.workplace.Finish(name, std::move(file));
    folder.names.push_back(name);
}

std::string TRedactOutput::GetPath(const std::string& relative) const {
    return (fs::path(directory_) / relative).string();
}

std::string TRedactOutput::GetPrivatePath(const std::string& relative) const {
    const fs::path path = fs::path(directory_) / relative;
    const TFolder& folder = *folders_.at(path.parent_path().string());
    return "/proc/self/fd/" + std::to_string(folder.workplace.GetDescriptor()) + "/" +
           path.filename().string();
}

void TRedactOutput::MoveIntoPlace() {
    for (const auto& [path, folder] : folders_) {
        for (const std::string& name : folder->names) {
            RequireFree(*folder, name);
        }
        folder->workplace.PrepareMoves();
    }
    for (const auto& [path, folder] : folders_) {
        const TTargetLock lock(folder->target);
        folder->workplace.CompleteOthers(lock);
        const TSignalGuard guard;
        folder->workplace.MoveOut(guard);
    }
    for (const auto& [path, folder] : folders_) {
        folder->workplace.SyncMoves();
    }
}

TRedactOutput::TFolder& TRedactOutput::GetFolder(const std::string& path) {
    auto place = folders_.find(path);
    if (place == folders_.end()) {
        MakeDirectories(path);
        place = folders_.emplace(path, std::make_unique<TFolder>(path, FailureOf(path))).first;
    }
    return *place->second;
}

void TRedactOutput::MakeDirectories(const std::string& path) {
    std::error_code ignored;  // opening the directory reports what is wrong with it
    if (path.empty() || fs::exists(path, ignored)) {
        return;
    }
    MakeDirectories(fs::path(path).parent_path().string());
    if (::mkdir(path.c_str(), S_IRWXU) == 0) {
        made_.push_back(path);
    } else if (errno != EEXIST) {
        throw TRunFailure(FailureOf(path) + ": " + std::generic_category().message(errno));
    }
}

void TRedactOutput::RequireFree(const TFolder& folder, const std::string& name) const {
    if (::faccessat(folder.target.GetDescriptor(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        throw TRunFailure(FailureOf(folder.target.GetPath(name)) +
                          ": the file exists, and is not overwritten");
    }
}

}  // namespace NVORHOST
