// Searches for many patterns in one pass.
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
    /// Shorter patterns would be found by chance.
    static constexpr std::size_t windowBytes = 6;

    struct TMatch {
        std::size_t start = 0;
        std::size_t length = 0;
        std::size_t owner = 0;
    };

    TBytePatterns() : mayStart_(bucketCount / 8) {}

    /// `owner` is what a match is reported with. Patterns shorter than a window are left out.
    void Add(std::string pattern, std::size_t owner);

    /// Every match, by start; of those at one place the longest one first.
    std::vector<TMatch> FindAll(std::string_view text) const;

  private:
    static constexpr std::size_t bucketCount = 1U << 16U;

    struct TPattern {
        std::string bytes;
        std::size_t owner = 0;
    };

    std::vector<std::uint8_t> mayStart_;  // a bit for each hash of a first window
    std::unordered_map<std::uint64_t, std::vector<TPattern>> patterns_;  // by their first window
};

}  // namespace NVORHOST
