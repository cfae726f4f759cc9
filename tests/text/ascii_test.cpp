#include "text/ascii.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

template <typename TPredicate>
std::string CollectCharacters(TPredicate isMember) {
    std::string members;
    for (int byte = 0; byte < 256; ++byte) {
        if (isMember(static_cast<char>(byte))) {
            members += static_cast<char>(byte);
        }
    }
    return members;
}

TEST(Ascii, ClassesHoldExactlyTheirCharacters) {
    EXPECT_EQ(CollectCharacters(IsDigit), "0123456789");
    EXPECT_EQ(CollectCharacters(IsUpper), "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    EXPECT_EQ(CollectCharacters(IsLower), "abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(CollectCharacters(IsLetter), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(CollectCharacters(IsAlphanumeric),
              "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(CollectCharacters(IsHexDigit), "0123456789ABCDEFabcdef");
}

TEST(Ascii, ChangesTheCaseOfLettersOnly) {
    EXPECT_EQ(ToLowerCase("AbZ09@[`{ \xC3\x84"), "abz09@[`{ \xC3\x84");
    EXPECT_EQ(ToUpperCase("aBz09@[`{ \xC3\xA4"), "ABZ09@[`{ \xC3\xA4");
    EXPECT_EQ(ToLowerCase(""), "");
    EXPECT_EQ(ToUpperCase(""), "");
}

TEST(EqualIgnoringCase, ComparesWholeTexts) {
    EXPECT_TRUE(EqualIgnoringCase("Serial Number", "sERIAL nUMBER"));
    EXPECT_TRUE(EqualIgnoringCase("", ""));
    EXPECT_FALSE(EqualIgnoringCase("abc", "ab"));
    EXPECT_FALSE(EqualIgnoringCase("@", "`"));
    EXPECT_FALSE(EqualIgnoringCase("\xC3\x84", "\xC3\xA4"));
}

}  // namespace
}  // namespace NVORHOST
