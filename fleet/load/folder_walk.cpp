#include "fleet/load/folder_walk.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <system_error>
#include <utility>

namespace NFLEET {
namespace {

namespace fs = std::filesystem;

struct TFolderContent {
    std::vector<std::string> files{};
    std::vector<std::string> folders{};
    std::vector<std::string> folderLinks{};
    std::vector<std::pair<std::string, std::error_code>> brokenLinks{};
};

// Special files are left out: opening one may wait for ever. So is what vanishes meanwhile.
void AddEntry(const fs::directory_entry& entry, TFolderContent& content) {
    std::error_code ignored;
    std::error_code error;
    const bool isLink = entry.is_symlink(ignored);
    const fs::file_status status = entry.status(error);
    if (fs::is_directory(status)) {
        (isLink ? content.folderLinks : content.folders).push_back(entry.path().string());
    } else if (fs::is_regular_file(status)) {
        content.files.push_back(entry.path().string());
    } else if (isLink && (error || !fs::exists(status))) {
        content.brokenLinks.emplace_back(
            entry.path().string(),
            error ? error : std::make_error_code(std::errc::no_such_file_or_directory));
    }
}

std::error_code List(const std::string& path, TFolderContent& content) {
    std::error_code error;
    fs::directory_iterator entry(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (!entry->path().filename().string().starts_with('.')) {
            AddEntry(*entry, content);
        }
    }
    std::ranges::sort(content.files);
    std::ranges::sort(content.folders, std::greater());
    std::ranges::sort(content.folderLinks);
    return error;
}

std::string FindRealPath(const std::string& path) {
    std::error_code error;
    return fs::canonical(path, error).string();
}

}  // namespace

TFolderWalk::TFolderWalk(const std::vector<std::string>& paths) {
    for (std::size_t root = paths.size(); root-- > 0;) {
        std::error_code error;
        const bool isFolder = fs::is_directory(paths[root], error);
        pending_.push_back({root, paths[root], isFolder});
        if (isFolder) {
            pending_.back().realPath = FindRealPath(paths[root]);
            starts_.insert(pending_.back().realPath);
        }
    }
}

std::optional<TFoundFiles> TFolderWalk::Next() {
    for (;;) {
        while (pending_.empty() && !links_.empty()) {
            FollowLink();
        }
        if (pending_.empty()) {
            return std::nullopt;
        }
        const TPlace place = std::move(pending_.back());
        pending_.pop_back();
        return place.isFolder ? VisitFolder(place) : TFoundFiles{place.root, place.path, false, {place.path}};
    }
}

void TFolderWalk::FollowLink() {
    TPlace link = std::move(links_.front());
    links_.pop_front();
    link.realPath = FindRealPath(link.path);
    if (!link.realPath.empty() && !IsReached(link.realPath)) {
        hasFollowedLinks_ = true;
        starts_.insert(link.realPath);
        pending_.push_back(std::move(link));
    }
}

// True if a start is the folder, or is above it without a hidden folder between them.
bool TFolderWalk::IsReached(const std::string& realPath) const {
    for (fs::path path = realPath;; path = path.parent_path()) {
        if (starts_.contains(path.string())) {
            return true;
        }
        if (path == path.parent_path() || path.filename().string().starts_with('.')) {
            return false;
        }
    }
}

TFoundFiles TFolderWalk::VisitFolder(const TPlace& place) {
    TFolderContent content;
    if (const std::error_code error = List(place.path, content)) {
        AddFailure(place.root, place.path, "cannot be read: " + error.message());
    }
    for (const std::string& folder : content.folders) {
        std::string realPath = (fs::path(place.realPath) / fs::path(folder).filename()).string();
        // Below a link, there may be folders from which the walk started before.
        if (!hasFollowedLinks_ || !starts_.contains(realPath)) {
            pending_.push_back({place.root, folder, true, std::move(realPath)});
        }
    }
    for (std::string& link : content.folderLinks) {
        links_.push_back({place.root, std::move(link), true});
    }
    for (const auto& [link, error] : content.brokenLinks) {
        AddFailure(place.root, link, "is a symbolic link that cannot be followed: " + error.message());
    }
    return {place.root, place.path, true, std::move(content.files)};
}

void TFolderWalk::AddFailure(std::size_t root, const std::string& path, const std::string& cause) {
    failures_.push_back({root, path, path + ": " + cause});
}

std::vector<TWalkFailure> TFolderWalk::TakeFailures() {
    return std::exchange(failures_, {});
}

void CountFiles(const std::vector<std::string>& paths, std::atomic<std::uint64_t>& count,
                const std::atomic<bool>& isStopped) {
    TFolderWalk walk(paths);
    while (!isStopped) {
        const auto found = walk.Next();
        if (!found) {
            return;
        }
        count += found->files.size();
        (void)walk.TakeFailures();  // the search reports them
    }
}

}  // namespace NFLEET
