#include "machine/parse/os_release.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseOsRelease, ReadsEveryMember) {
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

TEST(ParseOsRelease, LeavesMembersWithoutAnAssignmentAbsent) {
    const auto release = ParseOsRelease("NAME=Linux\nVERSION=\n");
    EXPECT_EQ(release.name, "Linux");
    EXPECT_EQ(release.prettyName, std::nullopt);
    EXPECT_EQ(release.version, std::nullopt);
    EXPECT_EQ(release.versionId, std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
