#include "machine/collect/storage/raid_adapter.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(FindRaidVolume, TakesTheUnitsOnTheChannelsOfVolumes) {
    EXPECT_EQ(FindRaidVolume("megaraid_sas", "0:2:0:0"), ERaidFamily::lsi);
    EXPECT_EQ(FindRaidVolume("megaraid_sas", "10:3:1:0"), ERaidFamily::lsi);
    EXPECT_EQ(FindRaidVolume("megaraid", "0:4:0:0"), ERaidFamily::lsi);
    EXPECT_EQ(FindRaidVolume("mpt3sas", "0:1:0:0"), ERaidFamily::lsi);
    EXPECT_EQ(FindRaidVolume("3w-sas", "0:0:0:0"), ERaidFamily::lsi);
    EXPECT_EQ(FindRaidVolume("3w-9xxx", "0:0:0:0"), ERaidFamily::lsiIde);
    EXPECT_EQ(FindRaidVolume("ips", "0:0:0:0"), ERaidFamily::sr);
    EXPECT_EQ(FindRaidVolume("aacraid", "0:0:0:0"), ERaidFamily::sr);
    EXPECT_EQ(FindRaidVolume("arcmsr", "0:0:0:0"), ERaidFamily::other);
}

TEST(FindRaidVolume, ReturnsNulloptForDisksThatTheAdapterPassesThrough) {
    EXPECT_EQ(FindRaidVolume("megaraid_sas", "0:0:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("megaraid_sas", "0:1:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("mpt3sas", "0:0:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("mpt3sas", "0:2:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("ips", "0:1:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("aacraid", "0:1:0:0"), std::nullopt);
}

TEST(FindRaidVolume, ReturnsNulloptForDriversOfOtherAdapters) {
    EXPECT_EQ(FindRaidVolume("ahci", "0:0:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("", "0:0:0:0"), std::nullopt);
    EXPECT_EQ(FindRaidVolume("3W-SAS", "0:0:0:0"), std::nullopt);
}

TEST(FindRaidVolume, RejectsMalformedAddresses) {
    for (const char* address : {"", "0", "0:", "0::0:0", "0:x:0:0", "0:-1:0:0", "0:4294967296:0:0"}) {
        EXPECT_EQ(FindRaidVolume("3w-sas", address), std::nullopt) << address;
    }
    EXPECT_EQ(FindRaidVolume("3w-sas", "0:4294967295:0:0"), ERaidFamily::lsi);
}

TEST(FindRaidFamily, DependsOnTheDriverOnly) {
    EXPECT_EQ(FindRaidFamily("megaraid_sas"), ERaidFamily::lsi);
    EXPECT_EQ(FindRaidFamily("3w-xxxx"), ERaidFamily::lsiIde);
    EXPECT_EQ(FindRaidFamily("aacraid"), ERaidFamily::sr);
    EXPECT_EQ(FindRaidFamily("stex"), ERaidFamily::other);
}

TEST(FindRaidFamily, ReturnsOtherForAnUnknownDriver) {
    EXPECT_EQ(FindRaidFamily("ahci"), ERaidFamily::other);
    EXPECT_EQ(FindRaidFamily(""), ERaidFamily::other);
}

}  // namespace
}  // namespace NVORHOST
