#include "tests/allocations/allocation_faults.h"
#include "tests/doubles/host_doubles.h"
#include "tests/plugin/plain_base64.h"
#include "tests/plugin/plugin_fixture.h"

#include <gmock/gmock.h>
#include <zlib.h>

#include <random>

namespace {

using testing::Each;

class TPayloadEncodersTest : public NTEST::TPluginFixture {
  protected:
    static constexpr unsigned char untouched = 0xEE;

    std::vector<unsigned char> EncodeInto(std::string_view bytes, unsigned int room) {
        // Exactly the documented room, so that a sanitizer detects one byte too many.
        std::vector<unsigned char> out(std::size_t{room} + 1, untouched);
        consumed_ = plugin_->Base64Encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                                          static_cast<unsigned int>(bytes.size()), out.data(), room);
        return out;
    }

    std::string Encode(std::string_view bytes) {
        const auto room = static_cast<unsigned int>((bytes.size() + 2) / 3 * 4);
        return reinterpret_cast<const char*>(EncodeInto(bytes, room).data());
    }

    unsigned int consumed_ = 0;
};

using TBase64Encode = TPayloadEncodersTest;
using TGZEncodeFromStr = TPayloadEncodersTest;

TEST_F(TBase64Encode, PadsAGroupOfOneByteWithTwoCharacters) {
    EXPECT_EQ(Encode("M"), "TQ==");
}

TEST_F(TBase64Encode, PadsAGroupOfTwoBytesWithOneCharacter) {
    EXPECT_EQ(Encode("Ma"), "TWE=");
}

TEST_F(TBase64Encode, DoesNotPadAWholeGroup) {
    EXPECT_EQ(Encode("Man"), "TWFu");
}

TEST_F(TBase64Encode, WritesTheNulDirectlyAfterTheText) {
    EXPECT_EQ(EncodeInto("Man", 6),
              (std::vector<unsigned char>{'T', 'W', 'F', 'u', '\0', untouched, untouched}));
}

TEST_F(TBase64Encode, WritesOnlyANulForNoBytes) {
    EXPECT_EQ(EncodeInto("", 0), (std::vector<unsigned char>{'\0'}));
    EXPECT_EQ(consumed_, 0U);
}

TEST_F(TBase64Encode, WritesOnlyANulForNoBytesWithAnyRoom) {
    EXPECT_EQ(EncodeInto("", 3), (std::vector<unsigned char>{'\0', untouched, untouched, untouched}));
    EXPECT_EQ(consumed_, 0U);
}

TEST_F(TBase64Encode, WritesNothingWithoutRoomForTheText) {
    EXPECT_THAT(EncodeInto("abcd", 7), Each(untouched));
}

TEST_F(TBase64Encode, WritesTextThatFillsTheRoom) {
    EXPECT_EQ(EncodeInto("abcd", 8),
              (std::vector<unsigned char>{'Y', 'W', 'J', 'j', 'Z', 'A', '=', '=', '\0'}));
}

TEST_F(TBase64Encode, EncodesAllOnes) {
    EXPECT_EQ(Encode("\xFF\xFF\xFF"), "////");
}

TEST_F(TBase64Encode, EncodesAllZeros) {
    EXPECT_EQ(Encode(std::string_view("\0\0\0", 3)), "AAAA");
}

TEST_F(TBase64Encode, UsesTheWholeAlphabetInOrder) {
    // All values of six bits in ascending order.
    std::string bytes;
    for (unsigned value = 0; value < 64; value += 4) {
        const unsigned bits = value << 18 | (value + 1) << 12 | (value + 2) << 6 | (value + 3);
        bytes += {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8), static_cast<char>(bits)};
    }
    EXPECT_EQ(Encode(bytes), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST_F(TBase64Encode, ReturnsTheInputLengthRoundedUpToWholeGroups) {
    std::vector<unsigned int> answers;
    for (const std::string_view bytes : {"", "a", "ab", "abc", "abcd"}) {
        Encode(bytes);
        answers.push_back(consumed_);
    }
    EXPECT_THAT(answers, testing::ElementsAre(0U, 3U, 3U, 3U, 6U));
}

TEST_F(TBase64Encode, RejectsATextWhoseLengthOverflowsTheCount) {
    // 3 GiB become 4 GiB, which is 0 as an unsigned int. Neither buffer may be accessed.
    unsigned char out = untouched;
    plugin_->Base64Encode(nullptr, 3221225472U, &out, 0);
    EXPECT_EQ(out, untouched);
}

TEST_F(TBase64Encode, AgreesWithAPlainEncoderOnRandomBytes) {
    std::mt19937 random(20090307);
    for (int round = 0; round < 5000; ++round) {
        std::string bytes(random() % 300, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        ASSERT_EQ(Encode(bytes), PlainBase64Encode(bytes)) << "round " << round;
        ASSERT_EQ(PlainBase64Decode(Encode(bytes)), bytes) << "round " << round;
    }
}

TEST_F(TBase64Encode, AllocatesNothing) {
    std::vector<unsigned char> out(5);
    const auto fault = NTEST::TAllocationFault::OfNumber(1);
    plugin_->Base64Encode(reinterpret_cast<const unsigned char*>("Man"), 3, out.data(), 4);
    EXPECT_FALSE(fault.HasStruck());
}

std::string Compressed(const std::string& bytes) {
    std::string out(4096, '\0');
    uLongf size = out.size();
    compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
             bytes.size());
    out.resize(size);
    return out;
}

std::string UpToFirstZero(const std::string& bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

TEST_F(TGZEncodeFromStr, CompressesTheTextWithItsTerminatingNul) {
    std::string text;
    for (int number = 1; number <= 25; ++number) {
        text += std::to_string(number) + " ";
    }
    const std::string expected = Compressed(text + '\0');
    ASSERT_EQ(expected.find('\0'), std::string::npos) << "this text was chosen because its form is not cut";
    EXPECT_EQ(plugin_->GZEncodeFromStr(text, text.size()), expected);
}

TEST_F(TGZEncodeFromStr, TruncatesTheResultAtItsFirstZeroByte) {
    const std::string whole = Compressed(std::string("\0\0", 2));
    ASSERT_NE(whole.find('\0'), std::string::npos) << "this text was chosen because its form is cut";
    EXPECT_EQ(plugin_->GZEncodeFromStr(std::string(1, '\0'), 1), UpToFirstZero(whole));
}

TEST_F(TGZEncodeFromStr, CompressesOneCharacterMoreThanAShortLength) {
    EXPECT_EQ(plugin_->GZEncodeFromStr("abcdef", 2), UpToFirstZero(Compressed("abc")));
}

TEST_F(TGZEncodeFromStr, TreatsALengthPastTheEndAsTheWholeText) {
    EXPECT_EQ(plugin_->GZEncodeFromStr("abc", 1000), plugin_->GZEncodeFromStr("abc", 3));
    EXPECT_EQ(plugin_->GZEncodeFromStr("abc", static_cast<unsigned long>(-1)),
              plugin_->GZEncodeFromStr("abc", 3));
}

TEST_F(TGZEncodeFromStr, CompressesTheNulOfAnEmptyText) {
    EXPECT_EQ(plugin_->GZEncodeFromStr("", 0), UpToFirstZero(Compressed(std::string(1, '\0'))));
}

TEST_F(TGZEncodeFromStr, ReturnsAtMost1024BytesWithoutAZero) {
    std::mt19937 random(1);
    for (std::size_t size = 0; size < 4000; size += 50) {
        std::string text(size, '\0');
        for (char& character : text) {
            character = static_cast<char>(random());
        }
        const std::string result = plugin_->GZEncodeFromStr(text, text.size());
        ASSERT_LE(result.size(), 1024U) << size;
        ASSERT_EQ(result.find('\0'), std::string::npos) << size;
    }
}

TEST_F(TGZEncodeFromStr, HandlesAResultThatFillsTheBufferWithoutAZero) {
    // zlib stores incompressible text unchanged, so text without zero bytes fills the buffer. Only the
    // headers of stored blocks may contain zeros; many texts are tried to get one without.
    std::mt19937 random(2);
    std::size_t longest = 0;
    for (int round = 0; round < 200; ++round) {
        std::string text(1500, 'x');
        for (char& character : text) {
            character = static_cast<char>('A' + random() % 52);
        }
        longest = std::max(longest, plugin_->GZEncodeFromStr(text, text.size()).size());
    }
    EXPECT_EQ(longest, 1024U);
}

}  // namespace
