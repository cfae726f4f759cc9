#include "inventory/compare/comparison.h"

#include "inventory/compare/application.h"
#include "inventory/compare/resource_order.h"
#include "tests/inventory/compare/inventories.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NINVENTORY {
namespace {

// Writes a comparison in short: "WORD OLD-ID NEW-ID PROPERTY..." for each difference.
std::string Summarize(const TComparison& comparison) {
    std::ostringstream text;
    for (const TDifference& difference : comparison.differences) {
        text << GetWord(difference.change) << ' ' << (difference.before ? difference.before->id : "none")
             << ' ' << (difference.after ? difference.after->id : "none");
        for (const TPropertyDifference& property : difference.properties) {
            text << ' ' << property.GetName();
        }
        text << '\n';
    }
    return text.str();
}

std::string Summarize(const TInventory& before, const TInventory& after,
                      const TComparisonSettings& settings = {}) {
    return Summarize(Compare(before, after, settings));
}

TEST(Compare, FindsNothingInTheSameInventory) {
    const TInventory inventory = MakeDocument({MakeModule("A1", "S1"), MakeModule("A2", "S2")});
    const TComparison comparison = Compare(inventory, inventory, {});
    EXPECT_TRUE(comparison.IsSame());
    ASSERT_EQ(comparison.unchanged.size(), 1U);
    EXPECT_EQ(comparison.unchanged[0].type, "PhysicalMemory");
    EXPECT_EQ(comparison.unchanged[0].count, 2U);
}

using NVORHOST::EValueStatus;

// The module without its serial number, which could not be looked at, or has no source.
TResource MakeModuleWithout(EValueStatus status) {
    TResource module = MakeModule("A1", "S1");
    module.properties.pop_back();
    module.sources.push_back({"SerialNumber", {status, {"type 17, 18h"}, "", {}}});
    return module;
}

TEST(Compare, DoesNotCallAValueGoneThatWasDenied) {
    const TResource other = MakeModule("B1", "S2");  // a value that no resource has is on one side only
    for (const EValueStatus status : {EValueStatus::denied, EValueStatus::asleep, EValueStatus::timedOut}) {
        const TInventory before = MakeNamespace({MakeModule("A1", "S1"), other});
        const TInventory after = MakeNamespace({MakeModuleWithout(status), other});
        const TComparison comparison = Compare(before, after, {});
        EXPECT_TRUE(comparison.IsSame());
        ASSERT_EQ(comparison.notKnown.size(), 1U);
        EXPECT_EQ(comparison.notKnown[0].property->name, "SerialNumber");
        EXPECT_EQ(comparison.notKnown[0].source->status, status);
        EXPECT_TRUE(comparison.notKnown[0].isInNew);
        const TComparison swapped = Compare(after, before, {});
        EXPECT_TRUE(swapped.IsSame());
        ASSERT_EQ(swapped.notKnown.size(), 1U);
        EXPECT_FALSE(swapped.notKnown[0].isInNew);
    }
}

TEST(Compare, CallsAValueGoneThatNoSourceHas) {
    const TResource other = MakeModule("B1", "S2");
    const TComparison comparison =
        Compare(MakeNamespace({MakeModule("A1", "S1"), other}),
                MakeNamespace({MakeModuleWithout(EValueStatus::absent), other}), {});
    EXPECT_FALSE(comparison.IsSame());
    EXPECT_TRUE(comparison.notKnown.empty());
}

TEST(Compare, DoesNotCallResourcesGoneThatCouldNotBeLookedAt) {
    const TInventory before = MakeNamespace({MakeModule("A1", "S1")});
    TInventory after = MakeNamespace({});
    after.types = before.types;
    after.unknownTypes.push_back({"PhysicalMemory", {EValueStatus::denied, {"type 17, 10h"}, "", {}}});
    const TComparison comparison = Compare(before, after, {});
    EXPECT_TRUE(comparison.IsSame());
    ASSERT_EQ(comparison.notKnown.size(), 1U);
    EXPECT_EQ(comparison.notKnown[0].property, nullptr);
    EXPECT_EQ(comparison.notKnown[0].resource, &before.resources[0]);
}

TEST(Compare, CallsAnotherSerialNumberAtAPlaceReplaced) {
    EXPECT_EQ(Summarize(MakeDocument({MakeModule("A1", "S1")}), MakeDocument({MakeModule("A1", "S2")})),
              "replaced ID-A1 ID-A1 SerialNumber\n");
    EXPECT_EQ(Summarize(MakeNamespace({MakeDisk("S1", "4")}), MakeNamespace({MakeDisk("S2", "4")})),
              "replaced ID-S1 ID-S2 DeviceID OtherIdentifyingInfo\n");
}

TEST(Compare, CallsASerialNumberAtAnotherPlaceMoved) {
    EXPECT_EQ(Summarize(MakeDocument({MakeModule("A1", "S1")}), MakeDocument({MakeModule("B1", "S1")})),
              "moved ID-A1 ID-B1 Name Tag\n");
    EXPECT_EQ(Summarize(MakeNamespace({MakeDisk("S1", "4")}), MakeNamespace({MakeDisk("S1", "5")})),
              "moved ID-S1 ID-S1 OtherIdentifyingInfo\n");
}

TEST(Compare, FollowsModulesThatExchangedTheirPlaces) {
    EXPECT_EQ(Summarize(MakeDocument({MakeModule("A1", "S1"), MakeModule("B1", "S2")}),
                        MakeDocument({MakeModule("A1", "S2"), MakeModule("B1", "S1")})),
              "moved ID-B1 ID-A1 Name Tag\nmoved ID-A1 ID-B1 Name Tag\n");
}

TEST(Compare, FollowsAModuleWhosePlaceANewOneTook) {
    EXPECT_EQ(Summarize(MakeDocument({MakeModule("A1", "S1")}),
                        MakeDocument({MakeModule("A1", "S9"), MakeModule("B1", "S1")})),
              "moved ID-A1 ID-B1 Name Tag\nadded none ID-A1\n");
}

TEST(Compare, ReportsOtherPartsAsRemovedAndAdded) {
    EXPECT_EQ(Summarize(MakeDocument({MakeModule("A1", "S1"), MakeModule("A2", "S2")}),
                        MakeDocument({MakeModule("A1", "S1"), MakeModule("B1", "S3")})),
              "removed ID-A2 none\nadded none ID-B1\n");
}

TEST(Compare, DoesNotTakeASharedControllerForAPlace) {
    EXPECT_EQ(Summarize(MakeNamespace({MakeDisk("S1", ""), MakeDisk("S2", "")}),
                        MakeNamespace({MakeDisk("S1", ""), MakeDisk("S3", "")})),
              "removed ID-S2 none\nadded none ID-S3\n");
}

TEST(Compare, PairsTheMachineAndItsSystemInAnyInventory) {
    EXPECT_EQ(Summarize(MakeDocument({MakeResource("Server", "1", {MakeText("SerialNumber", "A")})}),
                        MakeDocument({MakeResource("Server", "2", {MakeText("SerialNumber", "B")})})),
              "changed 1 2 SerialNumber\n");
}

TEST(Compare, CallsNewFirmwareUpdated) {
    EXPECT_EQ(Summarize(MakeNamespace({MakeResource("BIOSElement", "1", {MakeText("Version", "1.0")})}),
                        MakeNamespace({MakeResource("BIOSElement", "1", {MakeText("Version", "1.1")})})),
              "updated 1 1 Version\n");
}

TEST(Compare, LeavesOutWhatChangesByItself) {
    const auto make = [](const char* free) {
        return MakeDocument({MakeResource("OperatingSystem", "1", {MakeNumber("FreePhysicalMemory", free)})});
    };
    const TInventory before = make("1");
    const TInventory after = make("2");
    const TComparison comparison = Compare(before, after, {});
    EXPECT_TRUE(comparison.IsSame());
    EXPECT_EQ(comparison.volatileDifferences, 1U);
    EXPECT_EQ(Summarize(before, after, {.comparesAll = true}), "changed 1 1 FreePhysicalMemory\n");
}

TEST(Compare, LeavesOutTheNamesOfTheKernel) {
    const auto make = [](const char* name) {
        return MakeDocument({MakeResource("DiskPartition", "1", {MakeText("Name", name)})});
    };
    EXPECT_EQ(Summarize(make("sda1"), make("sdb1")), "");
    EXPECT_EQ(Summarize(make("sda1"), make("sda2")), "changed 1 1 Name\n");
    EXPECT_EQ(Summarize(make("sda1"), make("sdb1"), {.comparesAll = true}), "changed 1 1 Name\n");
}

TEST(Compare, LeavesOutTypesThatOnlyOneSideCovers) {
    const TInventory before = MakeDocument({});
    const TInventory after = MakeNamespace({MakeResource("Chassis", "1", {})});
    const TComparison comparison = Compare(before, after, {});
    EXPECT_TRUE(comparison.IsSame());
    EXPECT_EQ(comparison.oneSided,
              (std::vector<TOneSided>{{.type = "Chassis", .property = {}, .isInNew = true}}));
    EXPECT_EQ(Summarize(before, after, {.comparesAll = true}), "added none 1\n");
}

TEST(Compare, LeavesOutPropertiesThatNoResourceOfOneSideHas) {
    const auto make = [](const char* id, std::vector<TProperty> properties) {
        return MakeResource("Card", id, std::move(properties));
    };
    const TInventory before = MakeDocument({make("1", {MakeText("SerialNumber", "S")}), make("2", {})});
    const TInventory user = MakeDocument({make("1", {}), make("2", {})});
    EXPECT_EQ(Compare(before, user, {}).oneSided,
              (std::vector<TOneSided>{{.type = "Card", .property = "SerialNumber", .isInNew = false}}));
    const TInventory after = MakeDocument({make("1", {}), make("2", {MakeText("SerialNumber", "T")})});
    EXPECT_EQ(Summarize(before, after), "changed 1 1 SerialNumber\nchanged 2 2 SerialNumber\n");
}

TEST(Compare, IgnoresTypesAndProperties) {
    const TInventory before = MakeDocument({MakeModule("A1", "S1")});
    const TInventory after = MakeDocument({MakeModule("A1", "S2")});
    EXPECT_EQ(Summarize(before, after, {.ignored = {{"PhysicalMemory", "SerialNumber"}}}), "");
    EXPECT_EQ(Summarize(before, MakeDocument({}), {.ignored = {{"PhysicalMemory", ""}}}), "");
    EXPECT_NE(Summarize(before, after, {.ignored = {{"Card", "SerialNumber"}}}), "");
}

TEST(Compare, PairsDuplicatesOfAnIdentifierByTheirContent) {
    const auto make = [](const char* model) { return MakeResource("Card", "1", {MakeText("Model", model)}); };
    EXPECT_EQ(
        Summarize(MakeDocument({make("a"), make("b"), make("c")}), MakeDocument({make("c"), make("a")})),
        "removed 1 none\n");
    EXPECT_EQ(Summarize(MakeDocument({make("a"), make("b")}), MakeDocument({make("x"), make("a")})),
              "changed 1 1 Model\n");
}

TEST(Compare, ReportsANewIdentifierOfAPart) {
    const auto make = [](const char* id) {
        return MakeResource("Card", id, {MakeText("SerialNumber", "S")});
    };
    EXPECT_EQ(Summarize(MakeDocument({make("1")}), MakeDocument({make("2")})), "changed 1 2\n");
}

TEST(Apply, TurnsTheOldInventoryIntoTheNewOne) {
    const TInventory before = MakeDocument(
        {MakeModule("A1", "S1"), MakeModule("A2", "S2"), MakeResource("Card", "1", {MakeText("X", "a")})});
    const TInventory after = MakeDocument(
        {MakeResource("Card", "1", {MakeText("Y", "b"), MakeText("X", "c")}), MakeModule("A2", "S1")});
    const auto applied = Apply(Compare(before, after, {.comparesAll = true}), before);
    ASSERT_EQ(applied.size(), 2U);
    EXPECT_EQ(applied[0].id, "ID-A2");
    EXPECT_EQ(MakeContent(applied[0]), MakeContent(after.resources[1]));
    EXPECT_EQ(MakeContent(applied[1]), MakeContent(after.resources[0]));
}

}  // namespace
}  // namespace NINVENTORY
