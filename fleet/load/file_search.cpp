#include "fleet/load/file_search.h"

#include "fleet/load/file_state.h"
#include "fleet/load/source_files.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace NFLEET {
TFileSearch::TFileSearch(const std::vector<std::string>& paths, std::size_t maxGroup,
                         std::chrono::nanoseconds resolution, TIsWanted isWanted)
    : walk_(paths), maxGroup_(maxGroup), resolution_(resolution), isWanted_(std::move(isWanted)) {}

std::optional<TFileGroup> TFileSearch::Next() {
    while (groups_.empty()) {
        auto found = walk_.Next();
        if (!found) {
            return std::nullopt;
        }
        AddGroups(std::move(*found));
    }
    TFileGroup group = std::move(groups_.back());
    groups_.pop_back();
    return group;
}

void TFileSearch::AddGroups(TFoundFiles found) {
    std::vector<std::string> together;
    std::vector<std::string> alone;
    for (std::string& file : found.files) {
        (found.isFolder && !IsArchive(file) ? together : alone).push_back(std::move(file));
    }
    if (together.size() > maxGroup_) {
        std::ranges::move(together, std::back_inserter(alone));
        std::ranges::sort(alone);
        together.clear();
    }
    for (std::size_t i = alone.size(); i-- > 0;) {
        if (isWanted_(alone[i])) {
            AddGroup(found.root, alone[i], {alone[i]});
        }
    }
    bool isAnyWanted = false;
    for (const std::string& file : together) {
        isAnyWanted = isWanted_(file) || isAnyWanted;
    }
    if (isAnyWanted) {
        AddGroup(found.root, found.path, std::move(together));
    }
}

void TFileSearch::AddGroup(std::size_t root, const std::string& path, std::vector<std::string> files) {
    const auto state = FindState(files, resolution_);
    groups_.push_back(
        {root, std::move(files), state ? std::optional(TSource{MakePlace(path), *state, 0}) : std::nullopt});
}

}  // namespace NFLEET
