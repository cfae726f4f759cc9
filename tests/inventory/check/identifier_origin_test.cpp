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

}  // namespace
}  // namespace NINVENTORY
