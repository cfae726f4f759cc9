#include "redaction/identities/byte_patterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using TFound = std::vector<std::pair<std::size_t, std::size_t>>;

// Returns start and owner of every match.
TFound Find(const TBytePatterns& patterns, std::string_view text) {
    TFound found;
    for (const auto& match : patterns.FindAll(text)) {
        found.emplace_back(match.start, match.owner);
    }
    return found;
}

TEST(BytePatterns, FindsEveryPatternAtEveryPlace) {
    TBytePatterns patterns;
    patterns.Add("abcdef", 1);
    patterns.Add("defghijk", 2);
    EXPECT_EQ(Find(patterns, "abcdefghijk abcdef"), (TFound{{0, 1}, {3, 2}, {12, 1}}));
    EXPECT_EQ(Find(patterns, "abcdeg"), TFound{});
    EXPECT_EQ(Find(patterns, ""), TFound{});
}

TEST(BytePatterns, ReturnsTheLongestMatchOfAPlaceFirst) {
    TBytePatterns patterns;
    patterns.Add("abcdef", 1);
    patterns.Add("abcdefgh", 2);
    EXPECT_EQ(Find(patterns, "abcdefgh"), (TFound{{0, 2}, {0, 1}}));
    EXPECT_EQ(Find(patterns, "abcdefg"), (TFound{{0, 1}}));
}

TEST(BytePatterns, FindsBytesOfAnyValue) {
    TBytePatterns patterns;
    const std::string bytes("\0\xFF\0\n\x80\0", 6);
    patterns.Add(bytes, 7);
    EXPECT_EQ(Find(patterns, "x" + bytes + "y"), (TFound{{1, 7}}));
}

TEST(BytePatterns, IgnoresPatternsShorterThanAWindow) {
    TBytePatterns patterns;
    patterns.Add("abcde", 1);
    EXPECT_EQ(Find(patterns, "abcdefgh"), TFound{});
}

TEST(BytePatterns, AgreesWithAPlainSearch) {
    TBytePatterns patterns;
    std::vector<std::string> all;
    for (unsigned int i = 0; i < 300; ++i) {
        std::string pattern;
        for (unsigned int digit = 0, number = i * 2654435761U; digit < 6 + i % 5; ++digit, number /= 3) {
            pattern += static_cast<char>('a' + number % 3);
        }
        patterns.Add(pattern, i);
        all.push_back(pattern);
    }
    std::string text;
    for (unsigned int i = 0, number = 1; i < 5000; ++i, number = number * 1103515245U + 12345U) {
        text += static_cast<char>('a' + (number >> 16U) % 3);
    }
    std::vector<bool> isFound(all.size());
    for (const auto& match : patterns.FindAll(text)) {
        EXPECT_EQ(text.substr(match.start, match.length), all[match.owner]);
        isFound[match.owner] = true;
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bool isFirst =
            std::find(all.begin(), all.end(), all[i]) - all.begin() == static_cast<std::ptrdiff_t>(i);
        if (isFirst) {
            EXPECT_EQ(isFound[i], text.find(all[i]) != std::string::npos) << all[i];
        }
    }
}

}  // namespace
}  // namespace NVORHOST
