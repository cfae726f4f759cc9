#include "machine/collect/storage/volume_uuid.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ArrayUuidFromUdev, ConvertsToTheFormOfTheKernel) {
    EXPECT_EQ(ArrayUuidFromUdev("11111111:22222222:33333333:44444444", "1.2"),
              "11111111-2222-2222-3333-333344444444");
}

TEST(ArrayUuidFromUdev, ReversesTheBytesOfEachWordForVersion090) {
    EXPECT_EQ(ArrayUuidFromUdev("01234567:89abcdef:01234567:89abcdef", "0.90"),
              "67452301-efcd-ab89-6745-2301efcdab89");
}

TEST(ArrayUuidFromUdev, ReturnsNulloptForAnythingButFourWordsOfHexadecimalDigits) {
    EXPECT_EQ(ArrayUuidFromUdev("", "1.2"), std::nullopt);
    EXPECT_EQ(ArrayUuidFromUdev("11111111:22222222:33333333", "1.2"), std::nullopt);
    EXPECT_EQ(ArrayUuidFromUdev("11111111:22222222:33333333:444444444", "1.2"), std::nullopt);
    EXPECT_EQ(ArrayUuidFromUdev("11111111-22222222-33333333-44444444", "1.2"), std::nullopt);
    EXPECT_EQ(ArrayUuidFromUdev("1111111g:22222222:33333333:44444444", "1.2"), std::nullopt);
}

TEST(FindMapperKind, SeparatesVolumesFromInternalLayers) {
    const std::string uuid = "LVM-" + std::string(64, 'x');
    const auto describe = [](const std::string& id, const std::string& name) {
        const auto kind = FindMapperKind(id, name);
        return kind ? std::string(kind->description) : "none";
    };
    EXPECT_EQ(describe(uuid, "vg0-home"), "LVM logical volume");
    EXPECT_EQ(describe(uuid, "my_rimage--group-home"), "LVM logical volume");
    EXPECT_EQ(describe(uuid + "-real", "vg0-home-real"), "none");
    EXPECT_EQ(describe(uuid, "vg0-home_rimage_0"), "none");
    EXPECT_EQ(describe(uuid, "vg0-pool_tdata"), "none");
    EXPECT_EQ(describe("mpath-3600a098", "mpatha"), "Multipath device");
    EXPECT_EQ(describe("part1-mpath-3600a098", "mpatha-part1"), "none");
    EXPECT_EQ(describe("CRYPT-LUKS1-0123-x", "x"), "Encrypted device, LUKS");
    EXPECT_EQ(describe("CRYPT-VERITY-0123-x", "x"), "none");
    EXPECT_EQ(describe("", "x"), "none");
}

TEST(ReadableMapperName, SplitsGroupAndVolumeAtTheSingleHyphen) {
    const std::string lvm = "LVM-" + std::string(64, 'x');
    EXPECT_EQ(ReadableMapperName(lvm, "vg.a--b-lv"), "vg.a-b/lv");
    EXPECT_EQ(ReadableMapperName(lvm, "vg-lv--1--2"), "vg/lv-1-2");
    EXPECT_EQ(ReadableMapperName(lvm, "a---b"), "a-/b");
    EXPECT_EQ(ReadableMapperName(lvm, "a----b-c"), "a--b/c");
    EXPECT_EQ(ReadableMapperName(lvm, "dm-0"), "dm/0");
    EXPECT_EQ(ReadableMapperName(lvm, "plain"), "plain");
}

TEST(ReadableMapperName, DecodesEscapesAndKeepsTheHyphensOfOtherDevices) {
    EXPECT_EQ(ReadableMapperName("mpath-1", "my\\x20disk--a"), "my disk--a");
    EXPECT_EQ(ReadableMapperName("CRYPT-LUKS2-0-luks-1", "luks-0123-4567"), "luks-0123-4567");
}

TEST(FindMapperPartition, ReadsNumberAndUuidOfTheWhole) {
    const auto found = FindMapperPartition("part12-mpath-3600a");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->number, 12U);
    EXPECT_EQ(found->wholeUuid, "mpath-3600a");
    for (const char* uuid : {"", "mpath-3600a", "part-mpath-3600a", "part1", "part1-", "partx-mpath-1"}) {
        EXPECT_FALSE(FindMapperPartition(uuid).has_value()) << uuid;
    }
}

TEST(IsMultipath, GoesByThePrefixOfTheUuid) {
    EXPECT_TRUE(IsMultipath("mpath-3600a098"));
    EXPECT_FALSE(IsMultipath("part1-mpath-3600a098"));
    EXPECT_FALSE(IsMultipath(""));
}

TEST(IsMirrorPart, LooksForReservedWordsInTheNameOfTheVolume) {
    for (const char* name : {"vg0-home_rimage_0", "vg0-home_rmeta_1", "vg0-home_mimage_0", "vg0-home_mlog"}) {
        EXPECT_TRUE(IsMirrorPart(name)) << name;
    }
    for (const char* name : {"vg0-home", "vg0-pool_tdata", "vg_rimage-home", "home_rimage_0", ""}) {
        EXPECT_FALSE(IsMirrorPart(name)) << name;
    }
}

TEST(MapperIdentity, DropsThePrefixOfLogicalVolumes) {
    EXPECT_EQ(MapperIdentity("LVM-0123abcd"), "0123abcd");
    EXPECT_EQ(MapperIdentity("mpath-3600a098"), "mpath-3600a098");
    EXPECT_EQ(MapperIdentity(""), "");
}

}  // namespace
}  // namespace NVORHOST
