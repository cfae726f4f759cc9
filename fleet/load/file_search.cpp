#include "fleet/load/file_search.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace NFLEET {
namespace {

namespace fs = std::filesystem;

struct TFolderContent {
    std::vector<std::string> files;
    std::vector<std::string> folders;
};

// Special files are left out: opening one may wait for ever.
std::error_code List(const std::string& path, TFolderContent& content) {
    std::error_code error;
    fs::directory_iterator entry(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().string();
        std::error_code ignored;  // a file that vanished is neither
        if (entry->path().filename().string().starts_with('.')) {
            continue;
        }
        if (!entry->is_symlink(ignored) && entry->is_directory(ignored)) {
            content.folders.push_back(name);
        } else if (entry->is_regular_file(ignored)) {
            content.files.push_back(name);
        }
    }
    return error;
}

}  // namespace

TFileSearch::TFileSearch(std::vector<std::string> paths, std::size_t maxGroup, TIsWanted isWanted)
    : pending_(std::move(paths)), maxGroup_(maxGroup), isWanted_(std::move(isWanted)) {
    std::ranges::reverse(pending_);
}

TFileGroup TFileSearch::Next() {
    const std::lock_guard lock(mutex_);
    while (groups_.empty() && !pending_.empty()) {
        const std::string path = std::move(pending_.back());
        pending_.pop_back();
        std::error_code error;
        if (fs::is_directory(path, error)) {
            ListFolder(path);
        } else if (isWanted_(path)) {
            groups_.push_back({path});
        }
    }
    if (groups_.empty()) {
        return {};
    }
    TFileGroup group = std::move(groups_.back());
    groups_.pop_back();
    return group;
}

void TFileSearch::ListFolder(const std::string& path) {
    TFolderContent content;
    if (const std::error_code error = List(path, content)) {
        failures_.push_back(path + ": cannot be read: " + error.message());
    }
    std::ranges::sort(content.files);
    std::ranges::sort(content.folders, std::greater());
    std::ranges::move(content.folders, std::back_inserter(pending_));
    std::vector<char> isWanted;
    std::ranges::transform(content.files, std::back_inserter(isWanted), isWanted_);
    const bool isAnyWanted = std::ranges::find(isWanted, 1) != isWanted.end();
    if (content.files.size() <= maxGroup_) {
        if (isAnyWanted) {
            groups_.push_back(std::move(content.files));
        }
        return;
    }
    for (std::size_t i = content.files.size(); i-- > 0;) {
        if (isWanted[i] != 0) {
            groups_.push_back({std::move(content.files[i])});
        }
    }
}

std::vector<std::string> TFileSearch::TakeFailures() {
    const std::lock_guard lock(mutex_);
    return std::exchange(failures_, {});
}

void CountFiles(const std::vector<std::string>& paths, std::atomic<std::uint64_t>& count,
                const std::atomic<bool>& isStopped) {
    std::vector<std::string> pending = paths;
    while (!pending.empty() && !isStopped) {
        const std::string path = std::move(pending.back());
        pending.pop_back();
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            ++count;
            continue;
        }
        TFolderContent content;
        (void)List(path, content);  // the search reports the failure
        count += content.files.size();
        std::ranges::move(content.folders, std::back_inserter(pending));
    }
}

bool TSeenFiles::See(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return false;
    }
    const TStamp stamp{status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_size};
    TStamp& seen = stamps_[path];
    const bool isChanged = seen != stamp;
    seen = stamp;
    return isChanged;
}

}  // namespace NFLEET
