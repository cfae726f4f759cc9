// The files at the paths of a load, a few at a time, so that directories of any size take little memory.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace NFLEET {

/// Files that are read together: those of one folder if there are few, else a single one.
using TFileGroup = std::vector<std::string>;

/// True if a file has to be read.
using TIsWanted = std::function<bool(const std::string& path)>;

/// Returns files in the order of their names, a folder's own files before those of folders within. Names that
/// begin with "." are left out, as are links to directories. Several threads may use one object.
class TFileSearch {
  public:
    /// `isWanted` decides about each file in a directory; a folder's few files are read together if one is
    /// wanted.
    TFileSearch(std::vector<std::string> paths, std::size_t maxGroup, TIsWanted isWanted);

    /// Returns the next files; none at the end.
    TFileGroup Next();
    /// Returns messages about directories that could not be read, each beginning with its path, and forgets
    /// them.
    std::vector<std::string> TakeFailures();

  private:
    void ListFolder(const std::string& path);

    std::mutex mutex_;
    std::vector<std::string> pending_;  // paths that were not looked at, the next one last
    std::vector<TFileGroup> groups_;    // the next one last
    std::vector<std::string> failures_;
    std::size_t maxGroup_;
    TIsWanted isWanted_;
};

/// Counts the files at `paths` as TFileSearch finds them; stops when `isStopped` is set.
void CountFiles(const std::vector<std::string>& paths, std::atomic<std::uint64_t>& count,
                const std::atomic<bool>& isStopped);

/// Remembers which files were read, by size and time of change.
class TSeenFiles {
  public:
    /// True if the file is new or changed since it was seen last; it is seen then.
    bool See(const std::string& path);

  private:
    struct TStamp {
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
        std::int64_t size = 0;

        bool operator==(const TStamp&) const = default;
    };

    std::unordered_map<std::string, TStamp> stamps_;
};

}  // namespace NFLEET
