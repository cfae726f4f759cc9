// Searches a text for many patterns in one pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NVORHOST {

/// Looks up every window of the text by its hash, so that the time does not depend on the number of patterns.
class TBytePatterns {
  public:
    /// Size of a window. Shorter patterns would match by chance.
    static constexpr std::size_t windowBytes = 6;

    struct TMatch {
        std::size_t start = 0;
        std::size_t length = 0;
        std::size_t owner = 0;
    };

    /// Adds a pattern, whose matches are reported with `owner`. Patterns shorter than a window are ignored.
    void Add(std::string pattern, std::size_t owner);

    /// Returns all matches by start, the longest first among those with the same start.
    std::vector<TMatch> FindAll(std::string_view text) const;

  private:
    struct TPattern {
        std::string bytes;
        std::size_t owner = 0;
    };

    std::size_t BucketOf(std::uint64_t window) const;
    void AppendMatches(std::string_view text, std::size_t start, std::uint64_t window,
                       std::vector<TMatch>& matches) const;
    void Mark(std::uint64_t window);
    void Grow();

    unsigned int bucketBits_ = 16;
    // A bit for each hash of a first window; few are set, because looking a window up takes long.
    std::vector<std::uint8_t> mayStart_ = std::vector<std::uint8_t>(std::size_t{1} << (16U - 3U));
    std::unordered_map<std::uint64_t, std::vector<TPattern>> patterns_;  // by their first window
};

}  // namespace NVORHOST
