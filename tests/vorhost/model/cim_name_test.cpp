#include "vorhost/model/cim_name.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using NVORHOST::EqualCimNames;
using NVORHOST::TCimNameEqual;
using NVORHOST::TCimNameHash;

std::string Upper(std::string text) {
    for (char& letter : text) {
        letter = static_cast<char>(letter >= 'a' && letter <= 'z' ? letter - 0x20 : letter);
    }
    return text;
}

TEST(CimName, IgnoresTheCaseOfLetters) {
    EXPECT_TRUE(EqualCimNames("KELSG_ComputerSystem", "kelsg_COMPUTERSYSTEM"));
    EXPECT_TRUE(TCimNameEqual{}("a", "A"));
}

TEST(CimName, EmptyNamesAreEqual) {
    EXPECT_TRUE(EqualCimNames("", ""));
}

TEST(CimName, OtherLettersOrAnotherLengthDiffer) {
    EXPECT_FALSE(EqualCimNames("Name", "Nama"));
    EXPECT_FALSE(EqualCimNames("Name", "Names"));
    EXPECT_FALSE(EqualCimNames("", "N"));
}

TEST(CimName, OnlyAsciiLettersFold) {
    EXPECT_FALSE(EqualCimNames("[", "{"));  // differ in the case bit alone
    EXPECT_FALSE(EqualCimNames("@", "`"));
    EXPECT_FALSE(EqualCimNames("\xC4", "\xE4"));  // A and a with diaeresis in Latin-1
    EXPECT_TRUE(EqualCimNames("\xC4", "\xC4"));
}

TEST(CimName, EqualNamesHashEqualAtEveryLength) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    for (std::size_t length = 0; length <= letters.size(); ++length) {
        const std::string name = letters.substr(0, length);
        EXPECT_EQ(TCimNameHash{}(name), TCimNameHash{}(Upper(name))) << length;
    }
}

TEST(CimName, HashDependsOnEveryByte) {
    for (std::size_t length = 1; length <= 20; ++length) {
        std::set<std::size_t> hashes;
        hashes.insert(TCimNameHash{}(std::string(length, 'a')));
        for (std::size_t at = 0; at < length; ++at) {
            std::string name(length, 'a');
            name[at] = 'b';
            hashes.insert(TCimNameHash{}(name));
        }
        EXPECT_EQ(hashes.size(), length + 1) << length;
    }
}

}  // namespace
