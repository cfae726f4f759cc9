#include "machine/parse/release_files.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseRedHatRelease, ReadsNameAndNumber) {
    const auto release = ParseRedHatRelease("CentOS release 6.9 (Final)\n");
    EXPECT_EQ(release.prettyName, "CentOS release 6.9 (Final)");
    EXPECT_EQ(release.versionId, "6.9");
    EXPECT_EQ(ParseRedHatRelease("Sample Enterprise Linux Server release 7.9 (Code)").versionId, "7.9");
}

TEST(ParseRedHatRelease, HasNoVersionWithoutANumber) {
    EXPECT_EQ(ParseRedHatRelease("Fedora release Rawhide\n").prettyName, "Fedora release Rawhide");
    EXPECT_EQ(ParseRedHatRelease("Fedora release Rawhide\n").versionId, std::nullopt);
    EXPECT_EQ(ParseRedHatRelease("Sample Linux\n").versionId, std::nullopt);
    EXPECT_EQ(ParseRedHatRelease("\n").prettyName, std::nullopt);
}

TEST(ParseSuseRelease, AppendsThePatchLevelToTheVersion) {
    const auto release =
        ParseSuseRelease("SUSE Linux Enterprise Server 11 (x86_64)\nVERSION = 11\nPATCHLEVEL = 3\n");
    EXPECT_EQ(release.prettyName, "SUSE Linux Enterprise Server 11 (x86_64)");
    EXPECT_EQ(release.versionId, "11.3");
    EXPECT_EQ(ParseSuseRelease("S\nVERSION = 11\nPATCHLEVEL = 0\n").versionId, "11");
    EXPECT_EQ(ParseSuseRelease("openSUSE 11.2 (i586)\nVERSION = 11.2\n").versionId, "11.2");
    EXPECT_EQ(ParseSuseRelease("openSUSE\nPATCHLEVEL = 1\n").versionId, std::nullopt);
    EXPECT_EQ(ParseSuseRelease("").prettyName, std::nullopt);
}

TEST(ParseDebianVersion, NamesTheSystemByItsVersion) {
    EXPECT_EQ(ParseDebianVersion("7.8\n").prettyName, "Debian GNU/Linux 7.8");
    EXPECT_EQ(ParseDebianVersion("7.8\n").versionId, "7.8");
}

TEST(ParseDebianVersion, HasNoVersionForAnUnreleasedSystem) {
    EXPECT_EQ(ParseDebianVersion("wheezy/sid\n").prettyName, "Debian GNU/Linux wheezy/sid");
    EXPECT_EQ(ParseDebianVersion("wheezy/sid\n").versionId, std::nullopt);
    EXPECT_EQ(ParseDebianVersion("").prettyName, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
