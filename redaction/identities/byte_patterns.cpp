#include "redaction/identities/byte_patterns.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

namespace NVORHOST {
namespace {

// The first byte is the lowest one.
std::uint64_t ReadWindow(const char* bytes) {
    std::uint64_t window = 0;
    std::memcpy(&window, bytes, TBytePatterns::windowBytes);
    return window;
}

}  // namespace

// Source: Knuth, The Art of Computer Programming, 6.4, multiplicative hashing; the top bits.
std::size_t TBytePatterns::BucketOf(std::uint64_t window) const {
    constexpr std::uint64_t goldenRatio = 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>((window * goldenRatio) >> (64U - bucketBits_));
}

void TBytePatterns::Mark(std::uint64_t window) {
    mayStart_[BucketOf(window) / 8] |= static_cast<std::uint8_t>(1U << (BucketOf(window) % 8));
}

void TBytePatterns::Grow() {
    bucketBits_ += 2;
    mayStart_.assign(std::size_t{1} << (bucketBits_ - 3U), 0);
    for (const auto& [window, patterns] : patterns_) {
        Mark(window);
    }
}

void TBytePatterns::Add(std::string pattern, std::size_t owner) {
    if (pattern.size() < windowBytes) {
        return;
    }
    const std::uint64_t window = ReadWindow(pattern.data());
    constexpr std::size_t bucketsForWindow = 64;
    constexpr unsigned int maxBits = 26;
    if (patterns_.size() * bucketsForWindow > mayStart_.size() * 8 && bucketBits_ < maxBits) {
        Grow();
    }
    Mark(window);
    std::vector<TPattern>& sameStart = patterns_[window];
    if (std::ranges::find(sameStart, pattern, &TPattern::bytes) != sameStart.end()) {
        return;
    }
    sameStart.push_back({std::move(pattern), owner});
    std::ranges::stable_sort(sameStart, std::ranges::greater(),
                             [](const TPattern& row) { return row.bytes.size(); });
}

std::vector<TBytePatterns::TMatch> TBytePatterns::FindAll(std::string_view text) const {
    std::vector<TMatch> matches;
    if (patterns_.empty() || text.size() < windowBytes) {
        return matches;
    }
    constexpr unsigned int lastByte = 8 * (windowBytes - 1);
    const std::uint8_t* const mayStart = mayStart_.data();
    std::uint64_t window = ReadWindow(text.data());
    for (std::size_t start = 0;; ++start) {
        const std::size_t bucket = BucketOf(window);
        if ((mayStart[bucket / 8] & (1U << (bucket % 8))) != 0) {
            AppendMatches(text, start, window, matches);
        }
        if (start + windowBytes == text.size()) {
            return matches;
        }
        const auto next = static_cast<std::uint8_t>(text[start + windowBytes]);
        window = window >> 8U | std::uint64_t{next} << lastByte;
    }
}

void TBytePatterns::AppendMatches(std::string_view text, std::size_t start, std::uint64_t window,
                                  std::vector<TMatch>& matches) const {
    const auto sameStart = patterns_.find(window);
    if (sameStart == patterns_.end()) {
        return;
    }
    for (const TPattern& pattern : sameStart->second) {
        if (text.substr(start).starts_with(pattern.bytes)) {
            matches.push_back({start, pattern.bytes.size(), pattern.owner});
        }
    }
}

}  // namespace NVORHOST
