#include "text/os_release.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

std::optional<std::string> FindName(std::string_view text) {
    return FindOsReleaseValue(text, "NAME");
}

TEST(FindOsReleaseValue, ReadsQuotedAndUnquotedValues) {
    constexpr std::string_view text =
        "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"
        "NAME='Debian GNU/Linux'\n"
        "VERSION_ID=12\n";
    EXPECT_EQ(FindOsReleaseValue(text, "PRETTY_NAME"), "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(FindOsReleaseValue(text, "NAME"), "Debian GNU/Linux");
    EXPECT_EQ(FindOsReleaseValue(text, "VERSION_ID"), "12");
}

TEST(FindOsReleaseValue, ResolvesEscapesInDoubleQuotes) {
    EXPECT_EQ(FindName(R"(NAME="a \"b\" \$c \\ \`")"), R"(a "b" $c \ `)");
    EXPECT_EQ(FindName(R"(NAME="it's \"x\" \$5")"), R"(it's "x" $5)");
}

TEST(FindOsReleaseValue, KeepsABackslashBeforeAnOrdinaryCharacterInDoubleQuotes) {
    EXPECT_EQ(FindName(R"(NAME="a\nb")"), R"(a\nb)");
    EXPECT_EQ(FindName(R"(NAME="a \d")"), R"(a \d)");
}

TEST(FindOsReleaseValue, KeepsBackslashesInSingleQuotes) {
    EXPECT_EQ(FindName(R"(NAME='a \"b')"), R"(a \"b)");
    EXPECT_EQ(FindName(R"(NAME='a "b" \c')"), R"(a "b" \c)");
}

TEST(FindOsReleaseValue, RemovesTheBackslashBeforeAnyCharacterOutsideQuotes) {
    EXPECT_EQ(FindName(R"(NAME=a\ b)"), "a b");
    EXPECT_EQ(FindName(R"(NAME=a\nb)"), "anb");
}

TEST(FindOsReleaseValue, KeepsABackslashAtTheEnd) {
    EXPECT_EQ(FindName("NAME=a\\"), "a\\");
}

TEST(FindOsReleaseValue, JoinsAdjacentParts) {
    EXPECT_EQ(FindName(R"(NAME="Some"' 'Thing)"), "Some Thing");
    EXPECT_EQ(FindName("NAME=Debian \"GNU/Linux\""), "Debian GNU/Linux");
}

TEST(FindOsReleaseValue, KeepsBlanksInAnUnquotedValue) {
    EXPECT_EQ(FindName("NAME=Debian GNU"), "Debian GNU");
    EXPECT_EQ(FindName("NAME= Debian  GNU \t\r\n"), "Debian  GNU");
}

TEST(FindOsReleaseValue, EndsAQuotedValueAtTheNextBlank) {
    EXPECT_EQ(FindName("NAME=\"Debian GNU\" # comment"), "Debian GNU");
    EXPECT_EQ(FindName("NAME='Debian GNU'\tmore"), "Debian GNU");
}

TEST(FindOsReleaseValue, IgnoresBlanksAndACarriageReturnAroundTheAssignment) {
    EXPECT_EQ(FindName("  NAME=indented\n"), "indented");
    EXPECT_EQ(FindName("\tNAME=\"Linux\" \r\nID=x\n"), "Linux");
}

TEST(FindOsReleaseValue, TakesTheLastAssignment) {
    EXPECT_EQ(FindName("NAME=a\nNAME=b\n"), "b");
    EXPECT_EQ(FindName("NAME=a\nNAME=\n"), std::nullopt);
}

TEST(FindOsReleaseValue, SkipsLinesWithAnOpenQuote) {
    EXPECT_EQ(FindName("NAME=\"open\n"), std::nullopt);
    EXPECT_EQ(FindName("NAME=Linux\nNAME='open\n"), "Linux");
    EXPECT_EQ(FindOsReleaseValue("NAME=\"open\nVERSION_ID=7\n", "VERSION_ID"), "7");
}

TEST(FindOsReleaseValue, SkipsLinesThatAreNotAnAssignmentOfTheName) {
    EXPECT_EQ(FindName("#NAME=comment\n# NAME=comment\n"), std::nullopt);
    EXPECT_EQ(FindName("MY_NAME=x\nNAME_OF=x\nNAME =x\n"), std::nullopt);
    EXPECT_EQ(FindName("NAME=Linux\nNAME\n"), "Linux");
}

TEST(FindOsReleaseValue, ReturnsNulloptForAMissingOrEmptyValue) {
    EXPECT_EQ(FindName(""), std::nullopt);
    EXPECT_EQ(FindName("ID=x\n"), std::nullopt);
    EXPECT_EQ(FindName("NAME=\nID=x\n"), std::nullopt);
    EXPECT_EQ(FindName("NAME=\"\"\n"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
