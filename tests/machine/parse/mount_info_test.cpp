#include "machine/parse/mount_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(ParseMountInfo, ReadsEveryField) {
    const auto mounts = ParseMountInfo(
        "36 35 8:2 /sub /mnt/data rw,noatime master:1 shared:7 - ext4 /dev/sda2 rw,errors=continue\n");
    ASSERT_THAT(mounts, SizeIs(1));
    EXPECT_EQ(mounts[0].id, 36U);
    EXPECT_EQ(mounts[0].parent, 35U);
    EXPECT_EQ(mounts[0].major, 8U);
    EXPECT_EQ(mounts[0].minor, 2U);
    EXPECT_EQ(mounts[0].root, "/sub");
    EXPECT_EQ(mounts[0].mountPoint, "/mnt/data");
    EXPECT_THAT(mounts[0].options, ElementsAre("rw", "noatime"));
    EXPECT_EQ(mounts[0].type, "ext4");
    EXPECT_EQ(mounts[0].source, "/dev/sda2");
    EXPECT_THAT(mounts[0].superOptions, ElementsAre("rw", "errors=continue"));
}

TEST(ParseMountInfo, ReadsLinesWithoutOptionalFields) {
    const auto mounts =
        ParseMountInfo("22 1 0:21 / /proc rw - proc proc rw\n23 1 0:22 / /sys ro - sysfs sysfs ro");
    ASSERT_THAT(mounts, SizeIs(2));
    EXPECT_EQ(mounts[0].type, "proc");
    EXPECT_EQ(mounts[1].mountPoint, "/sys");
}

TEST(ParseMountInfo, ResolvesOctalEscapes) {
    const auto mounts = ParseMountInfo(
        "40 1 8:1 / /media/my\\040disk\\011\\012\\134 rw - vfat /dev/disk\\0401 rw,label=a\\040b\n");
    ASSERT_THAT(mounts, SizeIs(1));
    EXPECT_EQ(mounts[0].mountPoint, "/media/my disk\t\n\\");
    EXPECT_EQ(mounts[0].source, "/dev/disk 1");
    EXPECT_THAT(mounts[0].superOptions, ElementsAre("rw", "label=a b"));
}

TEST(ParseMountInfo, KeepsBackslashesThatStartNoEscape) {
    const auto mounts = ParseMountInfo("40 1 8:1 / /a\\9\\04\\777 rw - vfat /dev/sda1\\0 rw\n");
    ASSERT_THAT(mounts, SizeIs(1));
    EXPECT_EQ(mounts[0].mountPoint, "/a\\9\\04\\777");
    EXPECT_EQ(mounts[0].source, "/dev/sda1\\0");
}

TEST(ParseMountInfo, AcceptsAMountPointThatIsADash) {
    const auto mounts = ParseMountInfo("40 1 8:1 - - rw - ext4 - rw\n");
    ASSERT_THAT(mounts, SizeIs(1));
    EXPECT_EQ(mounts[0].mountPoint, "-");
    EXPECT_EQ(mounts[0].type, "ext4");
    EXPECT_EQ(mounts[0].source, "-");
}

TEST(ParseMountInfo, SkipsLinesOfAnotherForm) {
    EXPECT_THAT(ParseMountInfo(""), IsEmpty());
    EXPECT_THAT(ParseMountInfo("36 35 8:2 /sub /mnt\n"), IsEmpty());
    EXPECT_THAT(ParseMountInfo("36 35 8:2 / /mnt rw ext4 /dev/sda2 rw\n"), IsEmpty());
    EXPECT_THAT(ParseMountInfo("x 35 8:2 / /mnt rw - ext4 /dev/sda2 rw\n"), IsEmpty());
    EXPECT_THAT(ParseMountInfo("36 35 8 / /mnt rw - ext4 /dev/sda2 rw\n"), IsEmpty());
    EXPECT_THAT(ParseMountInfo("36 35 8:2 / /mnt rw - ext4 /dev/sda2\n"), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
