#include "redaction/identities/byte_patterns.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

namespace NVORHOST {
namespace {

std::uint64_t ReadWindow(const char* bytes) {
    std::uint64_t window = 0;
    std::memcpy(&window, bytes, TBytePatterns::windowBytes);
    return window;
}

// Source: Knuth, The Art of Computer Programming, 6.4, multiplicative hashing; the top 19 bits.
std::size_t BucketOf(std::uint64_t window) {
    constexpr std::uint64_t goldenRatio = 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>((window * goldenRatio) >> 45U);
}

}  // namespace

void TBytePatterns::Add(std::string pattern, std::size_t owner) {
    if (pattern.size() < windowBytes) {
        return;
    }
    const std::uint64_t window = ReadWindow(pattern.data());
    mayStart_[BucketOf(window) / 8] |= static_cast<std::uint8_t>(1U << (BucketOf(window) % 8));
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
    if (patterns_.empty()) {
        return matches;
    }
    for (std::size_t start = 0; start + windowBytes <= text.size(); ++start) {
        const std::uint64_t window = ReadWindow(text.data() + start);
        const std::size_t bucket = BucketOf(window);
        if ((mayStart_[bucket / 8] & (1U << (bucket % 8))) == 0) {
            continue;
        }
        if (const auto sameStart = patterns_.find(window); sameStart != patterns_.end()) {
            for (const TPattern& pattern : sameStart->second) {
                if (text.substr(start).starts_with(pattern.bytes)) {
                    matches.push_back({start, pattern.bytes.size(), pattern.owner});
                }
            }
        }
    }
    return matches;
}

}  // namespace NVORHOST
