#include "text/utf8.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace NVORHOST {
namespace {

TEST(MultiByteLength, MeasuresWellFormedSequences) {
    EXPECT_EQ(MultiByteLength("\xC2\x80"), 2U);
    EXPECT_EQ(MultiByteLength("\xDF\xBF"), 2U);
    EXPECT_EQ(MultiByteLength("\xE0\xA0\x80"), 3U);
    EXPECT_EQ(MultiByteLength("\xED\x9F\xBF"), 3U);
    EXPECT_EQ(MultiByteLength("\xEF\xBF\xBF"), 3U);
    EXPECT_EQ(MultiByteLength("\xF0\x90\x80\x80"), 4U);
    EXPECT_EQ(MultiByteLength("\xF4\x8F\xBF\xBF"), 4U);
    EXPECT_EQ(MultiByteLength("\xC3\xA9tude"), 2U);
}

TEST(MultiByteLength, ReturnsZeroForAsciiAndForAnEmptyText) {
    EXPECT_EQ(MultiByteLength(""), 0U);
    EXPECT_EQ(MultiByteLength("a"), 0U);
    EXPECT_EQ(MultiByteLength("\x7F"), 0U);
}

TEST(MultiByteLength, RejectsOverlongForms) {
    EXPECT_EQ(MultiByteLength("\xC0\xAF"), 0U);
    EXPECT_EQ(MultiByteLength("\xC1\xBF"), 0U);
    EXPECT_EQ(MultiByteLength("\xE0\x9F\xBF"), 0U);
    EXPECT_EQ(MultiByteLength("\xF0\x8F\xBF\xBF"), 0U);
}

TEST(MultiByteLength, RejectsSurrogatesAndCodesAboveTheLast) {
    EXPECT_EQ(MultiByteLength("\xED\xA0\x80"), 0U);
    EXPECT_EQ(MultiByteLength("\xED\xBF\xBF"), 0U);
    EXPECT_EQ(MultiByteLength("\xF4\x90\x80\x80"), 0U);
    EXPECT_EQ(MultiByteLength("\xF5\x80\x80\x80"), 0U);
}

TEST(MultiByteLength, RejectsStrayAndTruncatedSequences) {
    EXPECT_EQ(MultiByteLength("\x80"), 0U);
    EXPECT_EQ(MultiByteLength("\xFF"), 0U);
    EXPECT_EQ(MultiByteLength("\xC3"), 0U);
    EXPECT_EQ(MultiByteLength("\xE2\x82"), 0U);
    EXPECT_EQ(MultiByteLength("\xE2\x82z"), 0U);
    EXPECT_EQ(MultiByteLength("\xF0\x9F\x92"), 0U);
}

TEST(DecodeUtf8, DecodesSequencesOfEveryLength) {
    EXPECT_EQ(DecodeUtf8("A"), U'A');
    EXPECT_EQ(DecodeUtf8("\xC3\xA9"), U'\u00E9');
    EXPECT_EQ(DecodeUtf8("\xE2\x82\xAC"), U'\u20AC');
    EXPECT_EQ(DecodeUtf8("\xF0\x9F\x92\xBE"), U'\U0001F4BE');
}

TEST(EncodeUtf8, EncodesCodesOfEveryLength) {
    EXPECT_EQ(EncodeUtf8(0), std::string(1, '\0'));
    EXPECT_EQ(EncodeUtf8(U'A'), "A");
    EXPECT_EQ(EncodeUtf8(U'\u00E9'), "\xC3\xA9");
    EXPECT_EQ(EncodeUtf8(U'\u20AC'), "\xE2\x82\xAC");
    EXPECT_EQ(EncodeUtf8(U'\U0001F4BE'), "\xF0\x9F\x92\xBE");
}

TEST(EncodeUtf8, ReplacesSurrogatesAndCodesAboveTheLast) {
    EXPECT_EQ(EncodeUtf8(0xD800), "\xEF\xBF\xBD");
    EXPECT_EQ(EncodeUtf8(0xDFFF), "\xEF\xBF\xBD");
    EXPECT_EQ(EncodeUtf8(0x110000), "\xEF\xBF\xBD");
}

TEST(EncodeUtf8, IsUndoneByDecodeUtf8) {
    for (char32_t code = 0; code <= 0x10FFFF; code += 0x35) {
        if (!IsSurrogate(code)) {
            const std::string bytes = EncodeUtf8(code);
            ASSERT_EQ(DecodeUtf8(bytes), code);
            ASSERT_EQ(std::max<std::size_t>(MultiByteLength(bytes), 1), bytes.size());
        }
    }
}

TEST(ReplaceMalformedUtf8, ReturnsNulloptForWellFormedText) {
    EXPECT_EQ(ReplaceMalformedUtf8(""), std::nullopt);
    EXPECT_EQ(ReplaceMalformedUtf8("eight by"), std::nullopt);
    EXPECT_EQ(ReplaceMalformedUtf8("seventeen  bytes."), std::nullopt);
    EXPECT_EQ(ReplaceMalformedUtf8("16 \xE2\x82\xAC a module, \xF0\x9F\x92\xBE"), std::nullopt);
}

TEST(ReplaceMalformedUtf8, ReplacesEveryMalformedByte) {
    EXPECT_EQ(ReplaceMalformedUtf8("\xFF"), "\xEF\xBF\xBD");
    EXPECT_EQ(ReplaceMalformedUtf8("a\xC3"), "a\xEF\xBF\xBD");
    EXPECT_EQ(ReplaceMalformedUtf8("\x80\xBFz"), "\xEF\xBF\xBD\xEF\xBF\xBDz");
    EXPECT_EQ(ReplaceMalformedUtf8("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(ReplaceMalformedUtf8("\xC3\xA9\xFF\xC3\xA9"), "\xC3\xA9\xEF\xBF\xBD\xC3\xA9");
}

TEST(ReplaceMalformedUtf8, FindsAMalformedByteAtEveryPositionOfALongText) {
    const std::string text = "twenty-four ASCII chars.";
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string malformed = text;
        malformed[i] = '\x9C';
        EXPECT_EQ(ReplaceMalformedUtf8(malformed), text.substr(0, i) + "\xEF\xBF\xBD" + text.substr(i + 1));
    }
}

}  // namespace
}  // namespace NVORHOST
