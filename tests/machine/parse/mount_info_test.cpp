#include "machine/parse/mount_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

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

// The mount points on the way to the mount with that id, the root last.
std::vector<std::string> ListWay(std::string_view text, std::uint32_t id) {
    const auto mounts = ParseMountInfo(text);
    std::vector<std::string> points;
    for (const TMount& mount : mounts) {
        if (mount.id == id) {
            for (const TMount* step : ListMountsOnTheWay(mounts, mount)) {
                points.push_back(step->mountPoint);
            }
        }
    }
    return points;
}

TEST(ListMountsOnTheWay, ListsTheMountItsParentAndTheRoot) {
    constexpr char text[] =
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 8:2 / /home rw - ext4 /dev/sda2 rw\n"
        "22 21 8:3 / /home/backup rw - ext4 /dev/sda3 rw\n"
        "23 20 8:4 / /home2 rw - ext4 /dev/sda4 rw\n";
    EXPECT_THAT(ListWay(text, 20), ElementsAre("/"));
    EXPECT_THAT(ListWay(text, 22), ElementsAre("/home/backup", "/home", "/"));
    EXPECT_THAT(ListWay(text, 23), ElementsAre("/home2", "/"));
}

TEST(ListMountsOnTheWay, IsEmptyForAMountUnderAnother) {
    constexpr char text[] =
        "1 1 0:1 / / rw - rootfs rootfs rw\n"
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 8:2 / /mnt rw - ext4 /dev/sda2 rw\n"
        "22 21 0:40 / /mnt rw - nfs4 server:/export rw\n";
    EXPECT_THAT(ListWay(text, 1), IsEmpty());
    EXPECT_THAT(ListWay(text, 20), ElementsAre("/", "/"));
    EXPECT_THAT(ListWay(text, 21), IsEmpty());
    EXPECT_THAT(ListWay(text, 22), ElementsAre("/mnt", "/mnt", "/", "/"));
}

TEST(ListMountsOnTheWay, IsEmptyForAMountBelowADirectoryThatALaterMountCovers) {
    constexpr char text[] =
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 8:2 / /srv/data rw - ext4 /dev/sda2 rw\n"
        "22 21 8:3 / /srv/data/old rw - ext4 /dev/sda3 rw\n"
        "23 20 0:40 / /srv rw - nfs4 server:/export rw\n";
    EXPECT_THAT(ListWay(text, 21), IsEmpty());
    EXPECT_THAT(ListWay(text, 22), IsEmpty());
    EXPECT_THAT(ListWay(text, 23), ElementsAre("/srv", "/"));
}

TEST(ListMountsOnTheWay, IsEmptyForACircleOfParents) {
    EXPECT_THAT(ListWay("20 21 8:1 / /a rw - ext4 /dev/sda1 rw\n21 20 8:2 / /b rw - ext4 /dev/sda2 rw\n", 20),
                IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
