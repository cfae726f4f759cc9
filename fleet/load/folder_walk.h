// The files at the paths of a load, folder by folder, so that directories of any size take little memory.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace NFLEET {

/// The files of a folder, or a single file that is a path of the load.
struct TFoundFiles {
    std::size_t root = 0;  ///< index of the path of the load
    std::string path;      ///< of the folder or the file
    bool isFolder = false;
    std::vector<std::string> files{};  ///< paths of the folder's files in the order of their names
};

/// A folder or link that cannot be read.
struct TWalkFailure {
    std::size_t root = 0;  ///< index of the path of the load
    std::string path;
    std::string reason;  ///< begins with the path
};

/// Walks paths in their order, and folders in the order of names, a folder's own files before those of
/// folders within. Names that begin with "." and special files are left out. Symbolic links are followed. A
/// link to a folder is followed at the end, unless the walk has reached the folder: so each is visited once,
/// under the name without links if it has one, and links cannot form a loop.
class TFolderWalk {
  public:
    explicit TFolderWalk(const std::vector<std::string>& paths);

    /// Returns the next files; nullopt at the end. A folder may have none.
    std::optional<TFoundFiles> Next();
    /// Returns what could not be read, and forgets it.
    std::vector<TWalkFailure> TakeFailures();

  private:
    struct TPlace {
        std::size_t root = 0;
        std::string path;
        bool isFolder = false;
        std::string realPath{};  ///< of a folder, without links
    };

    void FollowLink();
    bool IsReached(const std::string& realPath) const;
    TFoundFiles VisitFolder(const TPlace& place);
    void AddFailure(std::size_t root, const std::string& path, const std::string& cause);

    std::vector<TPlace> pending_;   // the next one last
    std::deque<TPlace> links_;      // links to folders
    std::set<std::string> starts_;  // real paths of folders from which the walk reaches those within
    bool hasFollowedLinks_ = false;
    std::vector<TWalkFailure> failures_;
};

/// Counts the files at `paths` as TFolderWalk finds them; stops when `isStopped` is set.
void CountFiles(const std::vector<std::string>& paths, std::atomic<std::uint64_t>& count,
                const std::atomic<bool>& isStopped);

}  // namespace NFLEET
