// Whether files are the ones that were read before.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace NFLEET {

/// The longest time in which two changes of a file may have one time, on any file system.
inline constexpr std::chrono::nanoseconds timeResolution = std::chrono::seconds(2);

/// Returns a digest of the path of a folder, or of a single file.
std::uint64_t MakePlace(const std::string& path);

/// Returns a digest of the names of files with their sizes, times and numbers: it is another one after any of
/// them was written or replaced, because each change of a file gives it another time, which programs cannot
/// set. Returns nullopt for a file that is missing, or that changed less than `resolution` ago, and so may
/// change again without another time.
std::optional<std::uint64_t> FindState(const std::vector<std::string>& paths,
                                       std::chrono::nanoseconds resolution);

/// Remembers which files were read, by size and time of change, while directories are followed.
class TSeenFiles {
  public:
    explicit TSeenFiles(std::chrono::nanoseconds resolution) : resolution_(resolution) {}

    /// True if the file is new or changed since it was seen last; it is seen then. A file that changed less
    /// than the resolution ago may still be written: it is seen by a later call, when it did not change since
    /// the one before.
    bool See(const std::string& path);

  private:
    struct TStamp {
        std::int64_t modified = 0;  ///< nanoseconds
        std::int64_t changed = 0;   ///< nanoseconds
        std::int64_t size = 0;

        bool operator==(const TStamp&) const = default;
    };
    struct TFile {
        TStamp stamp;
        bool isSeen = false;
    };

    std::chrono::nanoseconds resolution_;
    std::unordered_map<std::string, TFile> files_;
};

}  // namespace NFLEET
