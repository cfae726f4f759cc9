// Resources divided into version, identity and volatile values, and put together again.
#include "fleet/model/division.h"

#include "fleet/model/assembly.h"
#include "fleet/model/property_part.h"

#include <gtest/gtest.h>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TProperty;
using NINVENTORY::TResource;

TProperty MakeText(std::string name, std::string value) {
    return {std::move(name), "string", EShape::scalar, {std::move(value)}};
}

TResource MakeDisk(const std::string& serial, const std::string& mounts) {
    return {"70ADFB0B0FA119B1FDFE233356E12247",
            "DiskDrive",
            "LogicalDevice",
            "",
            {MakeText("Name", "SAMPLE SM600"),
             MakeText("MountCount", mounts),
             MakeText("DeviceID", serial),
             {"OperationalStatus", "unsignedShort", EShape::array, {"2", "5"}}},
            0};
}

TEST(DivideResource, SeparatesStableIdentifyingAndVolatileProperties) {
    const TDivision division = DivideResource(MakeDisk("naa.5000c5001234abcd", "17"));

    EXPECT_EQ(division.version.type, "DiskDrive");
    EXPECT_EQ(division.version.list, "LogicalDevice");
    EXPECT_EQ(division.version.properties,
              (std::vector<TVersionProperty>{
                  {MakeText("Name", "SAMPLE SM600"), false},
                  {{"DeviceID", "string", EShape::scalar, {}}, true},
                  {{"OperationalStatus", "unsignedShort", EShape::array, {"2", "5"}}, false}}));
    EXPECT_EQ(division.identity, (TIdentity{{"naa.5000c5001234abcd"}}));
    EXPECT_EQ(division.volatileProperties, (std::vector<TPlacedProperty>{{1, MakeText("MountCount", "17")}}));
}

TEST(DivideResource, GivesOneVersionToPartsThatDifferOnlyInIdentityAndVolatileValues) {
    EXPECT_EQ(DivideResource(MakeDisk("A", "1")).version, DivideResource(MakeDisk("B", "2")).version);
}

TEST(DivideResource, GivesAnotherVersionForAnyOtherDifference) {
    const TDigest digest = DivideResource(MakeDisk("A", "1")).version.digest;
    const auto changed = [](const auto& change) {
        TResource disk = MakeDisk("A", "1");
        change(disk);
        return DivideResource(disk).version.digest;
    };

    EXPECT_NE(changed([](TResource& disk) { disk.type = "TapeDrive"; }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.list.clear(); }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.properties[0].name = "Names"; }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.properties[0].type = "int"; }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.properties[0].values[0] += " "; }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.properties[2].shape = EShape::null; }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.properties[3].values = {"25"}; }), digest);
    EXPECT_NE(changed([](TResource& disk) { disk.properties.pop_back(); }), digest);
}

TEST(AssembleResource, ReturnsTheResourceThatWasDivided) {
    const TResource disk = MakeDisk("naa.5000c5001234abcd", "17");
    const TDivision division = DivideResource(disk);
    TPresence presence;
    presence.resource = *ParseDigest(disk.id);
    presence.identity = division.identity;

    TResource assembled = AssembleResource(presence, division.version);
    const std::vector<TVolatileValue> values = {{presence.resource, 1, MakeText("MountCount", "17")}};
    AddVolatileValues(values, presence.resource, assembled);

    EXPECT_EQ(assembled.id, disk.id);
    EXPECT_EQ(assembled.type, disk.type);
    EXPECT_EQ(assembled.list, disk.list);
    EXPECT_EQ(assembled.properties, disk.properties);
}

TEST(GetTypeParts, FollowsTheMeaningOfProperties) {
    EXPECT_EQ(GetTypeParts("OperatingSystem").Get("FreePhysicalMemory"), EPropertyPart::isVolatile);
    EXPECT_EQ(GetTypeParts("OperatingSystem").Get("Version"), EPropertyPart::stable);
    EXPECT_EQ(GetTypeParts("PhysicalMemory").Get("SerialNumber"), EPropertyPart::identifying);
    EXPECT_EQ(GetTypeParts("NoSuchType").Get("SerialNumber"), EPropertyPart::identifying);
    EXPECT_EQ(GetTypeParts("NoSuchType").Get("DeviceID"), EPropertyPart::stable);
    EXPECT_EQ(GetTypeParts("BasedOn").Get("Antecedent"), EPropertyPart::identifying);
}

TEST(IsStoredType, LeavesProcessesAndResultsOut) {
    EXPECT_TRUE(IsStoredType("DiskDrive"));
    EXPECT_FALSE(IsStoredType("Process"));
    EXPECT_FALSE(IsStoredType("CADAT"));
}

TEST(MakeContentDigest, DependsOnResourceVersionAndIdentityOnly) {
    TPresence presence;
    presence.identity = {{"A"}};
    TPresence later = presence;
    later.since = 7;
    TPresence other = presence;
    other.identity = {{"B"}};

    EXPECT_EQ(MakeContentDigest(std::vector{presence}), MakeContentDigest(std::vector{later}));
    EXPECT_NE(MakeContentDigest(std::vector{presence}), MakeContentDigest(std::vector{other}));
}

}  // namespace
}  // namespace NFLEET
