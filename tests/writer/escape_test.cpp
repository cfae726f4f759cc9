#include "writer/escape.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Escape, ReplacesMarkupByEntities) {
    EXPECT_EQ(Escape("A&B <c>"), "A&amp;B &lt;c&gt;");
}

TEST(Escape, EscapesAnAmpersandOnce) {
    EXPECT_EQ(Escape("&amp;"), "&amp;amp;");
}

TEST(Escape, KeepsQuotes) {
    EXPECT_EQ(Escape("say \"hi\", it's"), "say \"hi\", it's");
}

TEST(Escape, DropsLineEnds) {
    EXPECT_EQ(Escape("\ra\r\nb\n"), "ab");
}

TEST(Escape, ReplacesATabByABlank) {
    EXPECT_EQ(Escape("a\tb"), "a b");
}

TEST(Escape, ReplacesEachByteOfANonAsciiCharacterByABlank) {
    EXPECT_EQ(Escape("caf\xC3\xA9!"), "caf  !");
}

TEST(Escape, KeepsAnEmptyText) {
    EXPECT_EQ(Escape(""), "");
}

TEST(Escape, HandlesEveryByteValue) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = {'a', static_cast<char>(byte), 'z'};
        std::string expected = " ";
        if (byte == '&') {
            expected = "&amp;";
        } else if (byte == '<') {
            expected = "&lt;";
        } else if (byte == '>') {
            expected = "&gt;";
        } else if (byte == 0x0D || byte == 0x0A) {
            expected = "";
        } else if (byte >= 0x20 && byte <= 0x7F) {
            expected = std::string(1, static_cast<char>(byte));
        }
        EXPECT_EQ(Escape(text), "a" + expected + "z") << "byte " << byte;
    }
}

TEST(Escape, ReplacesAZeroByteByABlank) {
    EXPECT_EQ(Escape(std::string("a\0b", 3)), "a b");
}

TEST(EscapeTo, ReturnsTheEndOfTheEscapedText) {
    char room[maxEscapedSize * 3 + 1] = "";
    char* const end = EscapeTo(room, "<a&");
    EXPECT_EQ(std::string(room, end), "&lt;a&amp;");
    EXPECT_EQ(*end, '\0') << "nothing is written past the end";
}

TEST(EscapeTo, NeedsNoMoreThanTheLargestSizeForEachByte) {
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_LE(Escape(std::string(1, static_cast<char>(byte))).size(), maxEscapedSize) << "byte " << byte;
    }
}

TEST(IsWrittenAsItIs, AgreesWithEscapeForEveryByte) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = {'a', static_cast<char>(byte), 'z'};
        EXPECT_EQ(IsWrittenAsItIs(text), Escape(text) == text) << "byte " << byte;
    }
}

TEST(IsWrittenAsItIs, FindsOneByteAnywhereInALongText) {
    const std::string text(100, 'a');
    EXPECT_TRUE(IsWrittenAsItIs(text));
    for (std::size_t position = 0; position < text.size(); ++position) {
        std::string changed = text;
        changed[position] = '&';
        EXPECT_FALSE(IsWrittenAsItIs(changed)) << "position " << position;
    }
}

TEST(IsWrittenAsItIs, HoldsForAnEmptyText) {
    EXPECT_TRUE(IsWrittenAsItIs(""));
}

}  // namespace
