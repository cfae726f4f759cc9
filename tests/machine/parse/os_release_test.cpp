#include "machine/parse/os_release.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseOsRelease, ReadsQuotedAndBareValues) {
    const auto release = ParseOsRelease(
        "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"
        "NAME='Debian GNU/Linux'\n"
        "VERSION_ID=12\n"
        "VERSION=\"12 (bookworm)\"\n"
        "ID=debian\n");
    EXPECT_EQ(release.prettyName, "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(release.name, "Debian GNU/Linux");
    EXPECT_EQ(release.versionId, "12");
    EXPECT_EQ(release.version, "12 (bookworm)");
}

TEST(ParseOsRelease, UnquotesAsAShellDoes) {
    EXPECT_EQ(ParseOsRelease(R"(NAME="a \"b\" \$c \\ \d")").name, R"(a "b" $c \ \d)");
    EXPECT_EQ(ParseOsRelease(R"(NAME='a \"b')").name, R"(a \"b)");
    EXPECT_EQ(ParseOsRelease(R"(NAME=a\ b)").name, "a b");
    EXPECT_EQ(ParseOsRelease(R"(NAME="Some"' 'Thing)").name, "Some Thing");
}

TEST(ParseOsRelease, KeepsTheBlanksInABareValue) {
    EXPECT_EQ(ParseOsRelease("NAME=Debian GNU").name, "Debian GNU");
    EXPECT_EQ(ParseOsRelease("NAME= Debian  GNU \t\r\n").name, "Debian  GNU");
    EXPECT_EQ(ParseOsRelease("NAME=Debian \"GNU/Linux\"").name, "Debian GNU/Linux");
}

TEST(ParseOsRelease, EndsAQuotedValueAtTheNextBlank) {
    EXPECT_EQ(ParseOsRelease("NAME=\"Debian GNU\" # comment").name, "Debian GNU");
    EXPECT_EQ(ParseOsRelease("NAME='Debian GNU'\tmore").name, "Debian GNU");
}

TEST(ParseOsRelease, TakesTheLastAssignmentOfAName) {
    EXPECT_EQ(ParseOsRelease("VERSION_ID=1\nVERSION_ID=2\n").versionId, "2");
    EXPECT_EQ(ParseOsRelease("VERSION_ID=1\nVERSION_ID=\n").versionId, std::nullopt);
}

TEST(ParseOsRelease, SkipsCommentsAndOpenQuotes) {
    EXPECT_EQ(ParseOsRelease("# NAME=comment\n").name, std::nullopt);
    EXPECT_EQ(ParseOsRelease("NAME=\"open\nVERSION_ID=7\n").name, std::nullopt);
    EXPECT_EQ(ParseOsRelease("NAME=\"open\nVERSION_ID=7\n").versionId, "7");
    EXPECT_EQ(ParseOsRelease("NAME\n").name, std::nullopt);
    EXPECT_EQ(ParseOsRelease("NAME=\"\"\n").name, std::nullopt);
    EXPECT_EQ(ParseOsRelease("  NAME=indented\n").name, "indented");
}

}  // namespace
}  // namespace NVORHOST
