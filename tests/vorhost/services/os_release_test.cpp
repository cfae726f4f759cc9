// The distribution's name in an os-release file.
#include "vorhost/services/os_release.h"

#include <gtest/gtest.h>

namespace {

using NVORHOST::ParsePrettyName;

TEST(OsRelease, GivesTheQuotedName) {
    EXPECT_EQ(ParsePrettyName("NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n"),
              "Debian GNU/Linux 12 (bookworm)");
}

TEST(OsRelease, GivesABareName) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=Linux"), "Linux");
}

TEST(OsRelease, ResolvesTheShellsQuoting) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME='a \"b\" \\c'\n"), "a \"b\" \\c");
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\"it's \\\"x\\\" \\$5\"\n"), "it's \"x\" $5");
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=a\\ b\n"), "a b");
}

TEST(OsRelease, KeepsABackslashBeforeAnOrdinaryByteInDoubleQuotes) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\"a \\d\"\n"), "a \\d");
}

TEST(OsRelease, KeepsTheBlanksInABareName) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=Debian GNU\n"), "Debian GNU");
    EXPECT_EQ(ParsePrettyName("  PRETTY_NAME= Debian GNU \n"), "Debian GNU");
}

TEST(OsRelease, EndsAQuotedNameAtTheNextBlank) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\"Debian GNU\" # comment\n"), "Debian GNU");
}

TEST(OsRelease, SkipsAnOpenQuote) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\"open\n"), std::nullopt);
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=Linux\nPRETTY_NAME='open\n"), "Linux");
}

TEST(OsRelease, DropsBlanksAndCarriageReturnAtTheLineEnd) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\"Linux\" \r\nID=x\n"), "Linux");
}

TEST(OsRelease, TakesTheLastAssignment) {
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=a\nPRETTY_NAME=b\n"), "b");
}

TEST(OsRelease, HasNoNameWithoutAnAssignedText) {
    EXPECT_EQ(ParsePrettyName(""), std::nullopt);
    EXPECT_EQ(ParsePrettyName("NAME=x\n#PRETTY_NAME=x\nMY_PRETTY_NAME=x\n"), std::nullopt);
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\nID=x\n"), std::nullopt);
    EXPECT_EQ(ParsePrettyName("PRETTY_NAME=\"\"\n"), std::nullopt);
}

}  // namespace
