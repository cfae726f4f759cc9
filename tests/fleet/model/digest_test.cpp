#include "fleet/model/digest.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>

namespace NFLEET {
namespace {

// Returns the number of different hashes, in 16 bits, of digests that differ only in two bytes.
std::size_t CountHashes(std::size_t high, std::size_t low) {
    std::set<std::size_t> hashes;
    for (unsigned number = 0; number < 1000; ++number) {
        TDigest digest;
        digest.bytes[high] = static_cast<std::uint8_t>(number / 256);
        digest.bytes[low] = static_cast<std::uint8_t>(number % 256);
        hashes.insert(TDigestHash()(digest) % 65536);
    }
    return hashes.size();
}

TEST(DigestHash, SpreadsDigestsThatShareTheirFirstHalf) {
    EXPECT_GT(CountHashes(14, 15), 900U);
    EXPECT_GT(CountHashes(8, 9), 900U);
}

TEST(DigestHash, SpreadsDigestsThatShareTheirSecondHalf) {
    EXPECT_GT(CountHashes(0, 1), 900U);
    EXPECT_GT(CountHashes(6, 7), 900U);
}

TEST(ParseDigestStart, CoversEveryDigestThatBeginsWithTheDigits) {
    const auto span = ParseDigestStart("0d5");
    ASSERT_TRUE(span.has_value());
    EXPECT_EQ(ToText(span->first), "0D500000000000000000000000000000");
    EXPECT_EQ(ToText(span->last), "0D5FFFFFFFFFFFFFFFFFFFFFFFFFFFFF");
    const TDigest digest = MakeDigest("x");
    EXPECT_EQ(ParseDigestStart(ToText(digest)), (TDigestSpan{digest, digest}));
}

TEST(ParseDigestStart, RejectsOtherTexts) {
    EXPECT_EQ(ParseDigestStart(""), std::nullopt);
    EXPECT_EQ(ParseDigestStart("0G"), std::nullopt);
    EXPECT_EQ(ParseDigestStart(ToText(MakeDigest("x")) + "0"), std::nullopt);
}

}  // namespace
}  // namespace NFLEET
