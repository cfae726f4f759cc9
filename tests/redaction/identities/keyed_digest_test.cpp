#include "redaction/identities/keyed_digest.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

// The key of the published vectors, bytes 00 to 0f.
constexpr std::array<std::uint64_t, 2> key{0x0706050403020100U, 0x0F0E0D0C0B0A0908U};

std::string CountingBytes(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) {
        bytes += static_cast<char>(i);
    }
    return bytes;
}

TEST(KeyedDigest, MatchesThePublishedVectors) {
    EXPECT_EQ(KeyedDigest(key, CountingBytes(0)), 0x726FDB47DD0E0E31U);
    EXPECT_EQ(KeyedDigest(key, CountingBytes(1)), 0x74F839C593DC67FDU);
    EXPECT_EQ(KeyedDigest(key, CountingBytes(7)), 0xAB0200F58B01D137U);
    EXPECT_EQ(KeyedDigest(key, CountingBytes(8)), 0x93F5F5799A932462U);
    EXPECT_EQ(KeyedDigest(key, CountingBytes(15)), 0xA129CA6149BE45E5U);
}

TEST(KeyedDigest, DependsOnTheKey) {
    EXPECT_NE(KeyedDigest({1, 2}, "text"), KeyedDigest({1, 3}, "text"));
    EXPECT_NE(KeyedDigest({1, 2}, "text"), KeyedDigest({2, 2}, "text"));
}

}  // namespace
}  // namespace NVORHOST
