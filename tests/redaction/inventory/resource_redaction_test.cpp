#include "redaction/inventory/resource_redaction.h"

#include "inventory/model/resource_id.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using NINVENTORY::DigestOf;
using NINVENTORY::EShape;
using NINVENTORY::MakeKey;
using NINVENTORY::TProperty;
using NINVENTORY::TResource;

constexpr TDigestKey key{1, 2, 3, 4};

TProperty MakeText(std::string name, std::string value) {
    return {std::move(name), "string", EShape::scalar, {std::move(value)}};
}

TResource MakeDisk(const std::string& id) {
    return {id,
            "DiskDrive",
            "LogicalDevice",
            "",
            {MakeText("DeviceID", "ZTA0M00001-n1"), {"MaxMediaSize", "unsignedLong", EShape::scalar, {"7"}}}};
}

TResource Redacted(TResource resource) {
    TIdentityTexts identities(key);
    TResourceLearning(identities).Learn(resource);
    TResourceRedaction(identities, key).Replace(resource);
    return resource;
}

TEST(ResourceRedaction, ComputesTheIdentifierFromTheReplacedKey) {
    const TResource disk = Redacted(MakeDisk(DigestOf(MakeKey("DiskDrive", "DeviceID", "ZTA0M00001-n1"))));
    EXPECT_EQ(disk.GetText("DeviceID"), TPseudonyms(key).Replace("ZTA0M00001") + "-n1");
    EXPECT_EQ(disk.id, DigestOf(MakeKey("DiskDrive", "DeviceID", disk.GetText("DeviceID"))));
}

TEST(ResourceRedaction, KeepsTheIdentifierOfAPosition) {
    TResource bridge{DigestOf(MakeKey("PCIBridge", "DeviceID", "0000:00:1c.0")),
                     "PCIBridge",
                     "",
                     "",
                     {MakeText("DeviceID", "0000:00:1c.0")}};
    EXPECT_EQ(Redacted(bridge).id, bridge.id);
}

TEST(ResourceRedaction, ReplacesAnIdentifierOfUnknownOrigin) {
    const std::string id = "0123456789ABCDEF0123456789ABCDEF";
    const std::string replaced = Redacted(MakeDisk(id)).id;
    EXPECT_NE(replaced, id);
    EXPECT_EQ(replaced.size(), id.size());
    EXPECT_EQ(Redacted(MakeDisk(id)).id, replaced);
    EXPECT_EQ(Redacted(MakeDisk("")).id, "");
}

TEST(ResourceRedaction, GivesPropertiesThatRepeatTheIdentifierTheNewOne) {
    const std::string id = DigestOf(MakeKey("Card", "Tag", "Baseboard"));
    TResource card{id, "Card", "", "", {MakeText("Tag", "Baseboard"), MakeText("GUID", id)}};
    EXPECT_EQ(Redacted(card).GetText("GUID"), id);
    card.id = "0123456789ABCDEF0123456789ABCDEF";
    card.properties[1].values[0] = card.id;
    const TResource redacted = Redacted(card);
    EXPECT_EQ(redacted.GetText("GUID"), redacted.id);
}

TEST(ResourceRedaction, MakesTheNameOfSystemInformationAnew) {
    TResource system{DigestOf(NINVENTORY::MakeSystemKey("7915", "SRV0012345")),
                     "NOXSystemInfo",
                     "",
                     "Example,7915-X3G-SRV0012345",
                     {MakeText("Manufacturer", "Example"), MakeText("MachineType", "7915"),
                      MakeText("Model", "X3G"), MakeText("SerialNumber", "SRV0012345")}};
    const std::string serial = TPseudonyms(key).Replace("SRV0012345");
    const TResource redacted = Redacted(system);
    EXPECT_EQ(redacted.name, "Example,7915-X3G-" + serial);
    EXPECT_EQ(redacted.id, DigestOf(NINVENTORY::MakeSystemKey("7915", serial)));
}

TEST(FindInResource, FindsWhatWasNotReplaced) {
    TIdentityTexts identities(key);
    TResourceLearning(identities).Learn(MakeDisk(""));
    const TIdentitySearch search(identities);
    EXPECT_EQ(FindInResource(MakeDisk(""), search), EIdentityKind::serialNumber);
    EXPECT_EQ(FindInResource(Redacted(MakeDisk("")), search), std::nullopt);
}

TEST(FindInResource, FindsAnIdentityThatAnEscapedCharacterDivides) {
    TIdentityTexts identities(key);
    TResourceLearning(identities).Learn(MakeDisk(""));
    const TIdentitySearch search(identities);
    TResource note{"", "DiskDrive", "", "", {MakeText("Description", "ZTA0&M00001")}};
    EXPECT_EQ(FindInResource(note, search), EIdentityKind::serialNumber);
}

}  // namespace
}  // namespace NVORHOST
