#include "writer/catalogue/md5.h"

#include "tests/writer/catalogue/plain_md5.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

std::string Md5(std::string_view message) {
    std::array<unsigned char, digestTextLength> digest{};
    WriteDigestText(message.data(), static_cast<unsigned int>(message.size()), digest.data());
    return {digest.begin(), digest.end()};
}

std::string RandomBytes(std::mt19937& random, std::size_t length) {
    std::string bytes(length, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

TEST(Md5, DigestsTheTestSuiteOfRfc1321) {
    EXPECT_EQ(Md5(""), "D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(Md5("a"), "0CC175B9C0F1B6A831C399E269772661");
    EXPECT_EQ(Md5("abc"), "900150983CD24FB0D6963F7D28E17F72");
    EXPECT_EQ(Md5("message digest"), "F96B697D7CB7938D525A2F31AAF161D0");
    EXPECT_EQ(Md5("abcdefghijklmnopqrstuvwxyz"), "C3FCD3D76192E4007DFB496CCA67E13B");
    EXPECT_EQ(Md5("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
              "D174AB98D277D9F5A5611C2C9F419D9F");
    EXPECT_EQ(Md5("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57EDF4A22BE3C955AC49DA2E2107B67A");
}

TEST(Md5, PadsAsTheStandardForLengthsAround56) {
    EXPECT_EQ(Md5(std::string(55, 'x')), "04364420E25C512FD958A70738AA8F72");
    EXPECT_EQ(Md5(std::string(57, 'x')), "693037871C4A9D3D8685018905CB530A");
    EXPECT_EQ(Md5(std::string(63, 'x')), "7DC2CA208106A2F703567BDFF99D8981");
    EXPECT_EQ(Md5(std::string(64, 'x')), "C1BB4F81D892B2D57947682AEB252456");
}

TEST(Md5, PadsOneBlockTooFewIfTheLengthIs56Modulo64) {
    EXPECT_EQ(Md5(std::string(56, 'x')), "C213E1DF62B71FDC2C5203DCA1E1D8E6");
    EXPECT_NE(Md5(std::string(56, 'x')), "668A72D5BA17F08E62DABCAFAD6DB14B") << "the standard digest";
    EXPECT_EQ(Md5(std::string(120, 'x')), "6281FCA65AEF78D19004639F65CB5A6B");
}

TEST(Md5, AgreesWithThePlainImplementationForEveryLengthUpToFiveBlocks) {
    std::mt19937 random(1);
    for (std::size_t length = 0; length <= 320; ++length) {
        const std::string message = RandomBytes(random, length);
        ASSERT_EQ(Md5(message), PlainMd5(message, EPadding::oneBlockShort)) << "length " << length;
    }
}

TEST(Md5, AgreesWithThePlainImplementationOnThousandsOfRandomMessages) {
    std::mt19937 random(2);
    for (int round = 0; round < 5000; ++round) {
        const std::string message = RandomBytes(random, random() % 600);
        ASSERT_EQ(Md5(message), PlainMd5(message, EPadding::oneBlockShort)) << "length " << message.size();
    }
}

TEST(Md5, DiffersFromTheStandardForNoOtherLength) {
    std::mt19937 random(3);
    for (std::size_t length = 0; length <= 192; ++length) {
        const std::string message = RandomBytes(random, length);
        const bool isStandard = Md5(message) == PlainMd5(message, EPadding::standard);
        EXPECT_EQ(isStandard, length % 64 != 56) << "length " << length;
    }
}

TEST(Md5, DigestsBytesOfAnyValue) {
    std::string message;
    for (int byte = 0; byte < 256; ++byte) {
        message += static_cast<char>(byte);
    }
    EXPECT_EQ(Md5(message), "E2C865DB4162BED963BFAA9EF6AC18F0");
}

TEST(Md5, ReadsFromAnyAlignment) {
    const std::string message = "....message digest";
    for (std::size_t offset = 0; offset <= 4; ++offset) {
        const std::string_view part = std::string_view(message).substr(offset);
        EXPECT_EQ(Md5(part), PlainMd5(part, EPadding::standard));
    }
}

TEST(Md5, AcceptsANullPointerWithLengthZero) {
    std::array<unsigned char, digestTextLength> digest{};
    WriteDigestText(nullptr, 0, digest.data());
    EXPECT_EQ(std::string(digest.begin(), digest.end()), "D41D8CD98F00B204E9800998ECF8427E");
}

TEST(Md5, WritesThirtyTwoCharactersAndNoTerminator) {
    std::array<unsigned char, digestTextLength + 2> room{};
    room.fill('?');
    WriteDigestText("a", 1, room.data() + 1);
    EXPECT_EQ(std::string(room.begin(), room.end()), "?0CC175B9C0F1B6A831C399E269772661?");
}

TEST(Md5, RejectsALengthWhosePaddedSizeExceeds32Bits) {
    std::array<unsigned char, digestTextLength> digest{};
    EXPECT_THROW(WriteDigestText("", std::numeric_limits<unsigned int>::max(), digest.data()),
                 std::length_error);
    EXPECT_THROW(WriteDigestText("", 0xFFFFFFC0U, digest.data()), std::length_error);
}

TEST(CompressBlock, UpdatesTheChainingWordsWithOneBlock) {
    // The padded message "a": its byte, the marker, and a length of 8 bits.
    unsigned char block[64] = {'a', 0x80};
    block[56] = 8;
    std::uint32_t words[] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    CompressBlock(block, words[0], words[1], words[2], words[3]);
    EXPECT_EQ(words[0], 0xb975c10cU);
    EXPECT_EQ(words[1], 0xa8b6f1c0U);
    EXPECT_EQ(words[2], 0xe299c331U);
    EXPECT_EQ(words[3], 0x61267769U);
}

TEST(WriteChainingWords, WritesEachWordLeastSignificantByteFirstAndHighNibbleFirst) {
    const std::uint32_t words[] = {0x12345678, 0x00000000, 0xFFFFFFFF, 0x0A0B0C0D};
    unsigned char text[digestTextLength];
    WriteChainingWords(words, text);
    EXPECT_EQ(std::string(std::begin(text), std::end(text)), "7856341200000000FFFFFFFF0D0C0B0A");
}

}  // namespace
