// The files of a load that are read together.
#pragma once

#include "fleet/load/folder_walk.h"
#include "fleet/model/rows.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace NFLEET {

/// Files that are read together: those of one folder if there are few, else a single one. An archive is
/// always a single one.
struct TFileGroup {
    std::size_t root = 0;  ///< index of the path of the load
    std::vector<std::string> paths;
    /// Place and state of the files. Absent if one of them may change without another state.
    std::optional<TSource> source{};
};

/// True if a file has to be read.
using TIsWanted = std::function<bool(const std::string& path)>;

/// Returns the files of a walk in its order.
class TFileSearch {
  public:
    /// `isWanted` decides about each file; a folder's few files are read together if one is wanted. Files
    /// that changed less than `resolution` ago have no state.
    TFileSearch(const std::vector<std::string>& paths, std::size_t maxGroup,
                std::chrono::nanoseconds resolution, TIsWanted isWanted);

    /// Returns the next files; nullopt at the end.
    std::optional<TFileGroup> Next();
    /// Returns what could not be read, and forgets it.
    std::vector<TWalkFailure> TakeFailures() { return walk_.TakeFailures(); }

  private:
    void AddGroups(TFoundFiles found);
    void AddGroup(std::size_t root, const std::string& path, std::vector<std::string> files);

    TFolderWalk walk_;
    std::vector<TFileGroup> groups_;  // the next one last
    std::size_t maxGroup_;
    std::chrono::nanoseconds resolution_;
    TIsWanted isWanted_;
};

}  // namespace NFLEET
