#include "machine/parse/cdrom_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr std::string_view sample =
    "CD-ROM information, Id: cdrom.c 3.20 2003/12/17\n"
    "\n"
    "drive name:\t\tsr1\tsr0\n"
    "drive speed:\t\t50\t4\n"
    "Can read DVD:\t\t0\t1\n";

TEST(ParseCdromInfo, PairsNamesAndAbilitiesByColumn) {
    const auto drives = ParseCdromInfo(sample);
    ASSERT_THAT(drives, SizeIs(2));
    EXPECT_EQ(drives[0].name, "sr1");
    EXPECT_EQ(drives[0].readsDvd, false);
    EXPECT_EQ(drives[1].name, "sr0");
    EXPECT_EQ(drives[1].readsDvd, true);
}

TEST(ParseCdromInfo, LeavesUnknownAbilitiesAbsent) {
    EXPECT_THAT(ParseCdromInfo(""), IsEmpty());
    EXPECT_THAT(ParseCdromInfo("drive name:\n"), IsEmpty());
    EXPECT_EQ(ParseCdromInfo("drive name: sr0\n").at(0).readsDvd, std::nullopt);
    EXPECT_EQ(ParseCdromInfo("drive name: sr0\nCan read DVD: ?\n").at(0).readsDvd, std::nullopt);
    EXPECT_EQ(ParseCdromInfo("drive name: sr0 sr1\nCan read DVD: 1\n").at(1).readsDvd, std::nullopt);
    EXPECT_THAT(ParseCdromInfo("drive name: sr0\nCan read DVD: 1 1 1\n"), SizeIs(1));
    EXPECT_THAT(ParseCdromInfo("Can read DVD: 1\n"), IsEmpty());
}

TEST(ParseCdromInfo, ReadsEveryPrefix) {
    for (std::size_t length = 0; length <= sample.size(); ++length) {
        for (const TCdromAbilities& drive : ParseCdromInfo(sample.substr(0, length))) {
            EXPECT_TRUE(std::string_view("sr1 sr0").find(drive.name) != std::string_view::npos) << length;
        }
    }
}

}  // namespace
}  // namespace NVORHOST
