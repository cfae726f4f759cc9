#include "inventory/check/identifier_origin.h"

#include "inventory/model/resource_id.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TResource MakeDisk(const std::string& key, const std::string& serialNumber = {}) {
    TResource disk{DigestOf(MakeKey("DiskDrive", "DeviceID", key)), "DiskDrive", {}, {}, {}};
    disk.properties.push_back({"DeviceID", "string", EShape::scalar, {key}});
    if (!serialNumber.empty()) {
        disk.properties.push_back({"SerialNumber", "string", EShape::scalar, {serialNumber}});
    }
    return disk;
}

TEST(IdentifierOrigin, HasTheKeyWithItsClassAndProperty) {
    const TIdentifierOrigin origin = ExplainIdentifier(MakeDisk("naa.5000c5001234abcd"));
    EXPECT_EQ(origin.key, "kel-cdm:///CDM-DiskDrive/DeviceID=naa.5000c5001234abcd");
    EXPECT_EQ(origin.className, "KELSG_DiskDrive");
    EXPECT_EQ(origin.keyProperty, "DeviceID");
    EXPECT_TRUE(origin.isConfirmed);
}

TEST(IdentifierOrigin, IsRecognisedByTheFormOfTheKey) {
    const auto originOf = [](const std::string& key) { return ExplainIdentifier(MakeDisk(key)).origin; };
    EXPECT_EQ(originOf("naa.5000c5001234abcd"), EKeyOrigin::worldWideName);
    EXPECT_EQ(originOf("eui.0025388b01a2b3c4"), EKeyOrigin::worldWideName);
    EXPECT_EQ(originOf("6b1a7c70-0000-4000-8000-000000000001"), EKeyOrigin::uuid);
    EXPECT_EQ(originOf("0000:00:14.0/usb3/3.1:1.0/0:0:0"), EKeyOrigin::position);
    EXPECT_EQ(originOf("20120926571200"), EKeyOrigin::identity);
    EXPECT_EQ(ExplainIdentifier(MakeDisk("Z1X2", "Z1X2")).origin, EKeyOrigin::serialNumber);
}

TEST(IdentifierOrigin, RecognisesWhatWasAppendedToTheKey) {
    EXPECT_TRUE(ExplainIdentifier(MakeDisk("Z1X2@0000:00:14.0")).isCollisionResolved);
    EXPECT_TRUE(ExplainIdentifier(MakeDisk("Z1X2#2")).isNumbered);
    EXPECT_TRUE(ExplainIdentifier(MakeDisk(std::string(64, 'x'))).isCut);
    const TIdentifierOrigin plain = ExplainIdentifier(MakeDisk("Z1X2"));
    EXPECT_FALSE(plain.isCollisionResolved || plain.isNumbered || plain.isCut);
}

TEST(IdentifierOrigin, RecognisesKeysOfTheShortPadding) {
    const std::string start = "kel-cdm:///CDM-DiskDrive/DeviceID=";
    EXPECT_TRUE(ExplainIdentifier(MakeDisk(std::string(55 - start.size(), 'x'))).hasShortPadding);
    EXPECT_FALSE(ExplainIdentifier(MakeDisk(std::string(54 - start.size(), 'x'))).hasShortPadding);
}

TEST(IdentifierOrigin, IsNoneForABareKey) {
    const TResource server{DigestOf(MakeBareKey("Server")), "Server", {}, {}, {}};
    const TIdentifierOrigin origin = ExplainIdentifier(server);
    EXPECT_EQ(origin.origin, EKeyOrigin::none);
    EXPECT_EQ(origin.key, "kel-cdm:///CDM-Server");
    EXPECT_TRUE(origin.isConfirmed);
    const TResource empty{DigestOf(MakeKey("Server", "Name", "")), "Server", {}, {}, {}};
    EXPECT_EQ(ExplainIdentifier(empty).key, "kel-cdm:///CDM-Server/Name=");
}

TEST(IdentifierOrigin, IsNotConfirmedForAChangedValue) {
    TResource disk = MakeDisk("Z1X2");
    disk.properties.front().values.front() = "Z1X3";
    EXPECT_FALSE(ExplainIdentifier(disk).isConfirmed);
}

TEST(IdentifierOrigin, DecidesWhetherTheIdentifierSurvives) {
    EXPECT_EQ(GetOriginText(EKeyOrigin::worldWideName).ifMoved, "keeps its identifier");
    EXPECT_EQ(GetOriginText(EKeyOrigin::position).ifMoved, "gets another identifier");
    EXPECT_EQ(GetOriginText(EKeyOrigin::position).ifRenamed, "keeps its identifier");
    EXPECT_EQ(GetOriginText(EKeyOrigin::name).ifRenamed, "gets another identifier");
}

TProperty MakeTexts(std::string name, std::vector<std::string> values) {
    return {std::move(name), "string", EShape::array, std::move(values)};
}

// A disk of a namespace, with the entries of OtherIdentifyingInfo.
TResource MakeNamedDisk(const std::string& key, std::vector<std::string> names,
                        std::vector<std::string> values) {
    TResource disk = MakeDisk(key);
    disk.properties.push_back(MakeTexts("OtherIdentifyingInfo", std::move(values)));
    disk.properties.push_back(MakeTexts("IdentifyingDescriptions", std::move(names)));
    return disk;
}

TEST(IdentifierOrigin, IsExactIfTheResourceHasTheIdentity) {
    const auto byName = ExplainIdentifier(MakeNamedDisk(
        "naa.5000c5001234abcd", {"Serial number", "World-wide name"}, {"S7M0", "naa.5000c5001234abcd"}));
    EXPECT_EQ(byName.origin, EKeyOrigin::worldWideName);
    EXPECT_TRUE(byName.passedOver.empty());
    const auto bySerial = ExplainIdentifier(MakeNamedDisk("Z1X2", {"Serial number"}, {"Z1X2"}));
    EXPECT_EQ(bySerial.origin, EKeyOrigin::serialNumber);
    EXPECT_EQ(bySerial.passedOver, (std::vector<std::string_view>{"world-wide name"}));
    EXPECT_FALSE(bySerial.hasUnit);
}

TEST(IdentifierOrigin, RecognisesTheUnitOfADeviceWithSeveral) {
    const auto unit = ExplainIdentifier(MakeNamedDisk("2012-1", {"Serial number"}, {"2012"}));
    EXPECT_EQ(unit.origin, EKeyOrigin::serialNumber);
    EXPECT_TRUE(unit.hasUnit);
}

TEST(IdentifierOrigin, ListsTheIdentitiesThatWerePassedOver) {
    const auto byPlace = ExplainIdentifier(
        MakeNamedDisk("0000:00:14.0/usb3/3.1:1.0/0:0:0", {"PCI function"}, {"0000:00:14.0"}));
    EXPECT_EQ(byPlace.origin, EKeyOrigin::position);
    EXPECT_EQ(byPlace.passedOver, (std::vector<std::string_view>{"world-wide name", "serial number"}));
}

TResource MakeKeyed(std::string type, std::string property, const std::string& key) {
    TResource resource{{}, std::move(type), {}, {}, {}};
    resource.properties.push_back({std::move(property), "string", EShape::scalar, {key}});
    return resource;
}

TEST(IdentifierOrigin, OfAPartitionIsThatOfItsOwnItsTableOrItsDisk) {
    const auto explain = [](const std::string& key) {
        return ExplainIdentifier(MakeKeyed("DiskPartition", "DeviceID", key));
    };
    EXPECT_EQ(explain("0c0ffee0-1111-4222-8333-444455556601").origin, EKeyOrigin::uuid);
    EXPECT_EQ(explain("1a2b3c4d-05").origin, EKeyOrigin::table);
    EXPECT_EQ(explain("eui.0025388b01a2b3c4-part10").origin, EKeyOrigin::worldWideName);
    EXPECT_EQ(explain("eui.0025388b01a2b3c4-part10").borrowed, "the key of its disk and its number");
    EXPECT_EQ(explain("0000:00:03.0-part1").origin, EKeyOrigin::position);
    EXPECT_EQ(explain("1a2b3c4d-05").borrowed, "");
}

TEST(IdentifierOrigin, OfAFileSystemIsItsUuidItsPlaceOrWhatHoldsIt) {
    TResource system = MakeKeyed("LocalFileSystem", "Name", "5A3C-19D0");
    system.properties.push_back({"UUID", "string", EShape::scalar, {"5A3C-19D0"}});
    EXPECT_EQ(ExplainIdentifier(system).origin, EKeyOrigin::uuid);
    TResource mounted = MakeKeyed("LocalFileSystem", "Name", "/snap/core");
    mounted.properties.push_back({"Root", "string", EShape::scalar, {"/snap/core"}});
    EXPECT_EQ(ExplainIdentifier(mounted).origin, EKeyOrigin::mountPoint);
    const auto held = ExplainIdentifier(MakeKeyed("LocalFileSystem", "Name", "naa.5000c500000000bb"));
    EXPECT_EQ(held.origin, EKeyOrigin::worldWideName);
    EXPECT_EQ(held.borrowed, "the key of the disk, partition or volume that holds it");
}

TEST(IdentifierOrigin, IsANumberWhereTheFirmwareNamesNoPlace) {
    EXPECT_EQ(ExplainIdentifier(MakeKeyed("Processor", "DeviceID", "package 0")).origin, EKeyOrigin::number);
    EXPECT_EQ(ExplainIdentifier(MakeKeyed("CacheMemory", "DeviceID", "L1 data cache 0")).origin,
              EKeyOrigin::number);
    EXPECT_EQ(ExplainIdentifier(MakeKeyed("Processor", "DeviceID", "CPU1")).origin, EKeyOrigin::label);
}

}  // namespace
}  // namespace NINVENTORY
