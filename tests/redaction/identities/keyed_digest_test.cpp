#include "redaction/identities/keyed_digest.h"

#include "text/hex.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

std::string HexDigest(const TDigestKey& key, std::string_view bytes) {
    const TDigest digest = MakeKeyedDigest(key)->Compute(bytes);
    return ToHex(std::string(digest.begin(), digest.end()));
}

// RFC 4231, case 1: its key of 20 bytes 0Bh is padded with zeros, as every shorter key is.
TEST(KeyedDigest, IsHmacSha256) {
    constexpr TDigestKey key{0x0B0B0B0B0B0B0B0BU, 0x0B0B0B0B0B0B0B0BU, 0x0B0B0B0BU, 0};
    EXPECT_EQ(HexDigest(key, "Hi There"), "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
}

// RFC 4231, case 2: the key is "Jefe".
TEST(KeyedDigest, UsesTheWordsOfAKeyWithTheirLeastSignificantByteFirst) {
    EXPECT_EQ(HexDigest({0x6566654AU}, "what do ya want for nothing?"),
              "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
}

TEST(KeyedDigest, StartsAnewForEachText) {
    const auto digest = MakeKeyedDigest({1, 2, 3, 4});
    const TDigest first = digest->Compute("serial");
    EXPECT_NE(digest->Compute("other"), first);
    EXPECT_EQ(digest->Compute("serial"), first);
}

}  // namespace
}  // namespace NVORHOST
