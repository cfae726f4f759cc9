#include "redaction/inventory/property_identity.h"

#include "inventory/model/resource_type.h"
#include "writer/catalogue/resource_catalogue.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

constexpr TDigestKey key{1, 2, 3, 4};

// The properties with texts that are the same on many machines: kinds, models,
// versions, places. A new property with texts must be added here, or identify in the table of meanings.
const std::set<std::string> harmless{
    "BankLabel",
    "ChassisTypeDescription",
    "ConnectorPinout",
    "CurrentValue",
    "Description",
    "ErrorMethodology",
    "FileSystemType",
    "FirmwareVersion",
    "IdentifyingDescriptions",
    "InstanceID",
    "InventoryRCF",
    "KernelRelease",
    "MachineType",
    "Manufacturer",
    "Media",
    "Model",
    "ObjectType",
    "OSVersion",
    "PartNumber",
    "PowerState",
    "ProcessID",
    "Role",
    "SKU",
    "SocketType",
    "SpecialRequirements",
    "State",
    "Stepping",
    "Version",
    "VirtualSystem",
};

// Names and keys that are positions, labels of the firmware or names of models in these types.
const std::set<std::string> harmlessKeys{
    "BIOSElement",     "CacheMemory",   "Card",
    "Chassis",         "DataSource",    "DesktopMonitor",
    "DiskDrive",       "DisketteDrive", "DisplayController",
    "IDEController",   "Memory",        "MemoryCapacity",
    "OperatingSystem", "OpticalDrive",  "PCIBridge",
    "PCIDevice",       "PCIPort",       "PhysicalConnector",
    "PhysicalMemory",  "PowerSupply",   "Battery",
    "Process",         "Processor",     "SecuritySetting",
    "Server",          "Slot",          "SoftwareElement",
    "TapeDrive",       "USBController", "USBPort",
    "VideoHead",       "srDiskGroup",
};

const std::set<std::string> keys{"DeviceID", "ElementName", "Name", "Tag"};

struct TDocumentedText {
    std::string className, property;
};

// Reads the rows "| `Name` | string | ..." below the headings "### `Class`".
std::vector<TDocumentedText> ReadDocumentedTexts() {
    std::vector<TDocumentedText> found;
    std::ifstream document(NOXINFO_DOCS "/collectors.md");
    std::string className;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("## ")) {
            className.clear();
        } else if (line.starts_with("### `")) {
            className = line.substr(5, line.find('`', 5) - 5);
        } else if (const auto end = line.find("` | string"); !className.empty() && end != std::string::npos) {
            found.push_back({className, line.substr(3, end - 3)});
        }
    }
    return found;
}

bool IsClassified(const std::string& type, const std::string& property) {
    return GetIdentity(type, property) != EIdentity::none || harmless.contains(property) ||
           (keys.contains(property) && harmlessKeys.contains(type));
}

TEST(GetIdentity, ClassifiesEveryTextOfTheCollectors) {
    const auto texts = ReadDocumentedTexts();
    EXPECT_GT(texts.size(), 200U);
    for (const TDocumentedText& text : texts) {
        const std::string type = NINVENTORY::GetTypeOfClass(text.className);
        const std::string property(GetDocumentName(text.className, text.property));
        EXPECT_TRUE(IsClassified(type, property)) << text.className << "." << property;
    }
}

TEST(GetIdentity, ClassifiesEveryKeyOfTheDocuments) {
    for (const TResourceClass& listed : GetResourceCatalogue()) {
        const std::string type = NINVENTORY::GetTypeOfClass(listed.className);
        for (const ::TPropertyRow& row : listed.properties) {
            const std::string property(row.outputName);
            const bool isKey = row.sourceName == listed.keyProperty;
            EXPECT_TRUE(!isKey || IsClassified(type, property)) << type << "." << property;
        }
    }
}

TEST(GetIdentity, FallsBackToTheNameOfAPropertyWithoutMeaning) {
    EXPECT_EQ(GetIdentity("Fan", "EnclosureSerialNumber"), EIdentity::serialNumber);
    EXPECT_EQ(GetIdentity("Fan", "SystemHostName"), EIdentity::hostName);
    EXPECT_EQ(GetIdentity("Fan", "DesiredSpeed"), EIdentity::none);
}

TEST(GetDocumentName, IsThatOfTheCatalogue) {
    EXPECT_EQ(GetDocumentName("KELSG_ComputerSystem", "Name"), "SystemBoardUUID");
    EXPECT_EQ(GetDocumentName("CIM_DiskPartition", "Size"), "PartitionSize");
    EXPECT_EQ(GetDocumentName("CIM_LocalFileSystem", "Name"), "Name");
}

std::string Redact(const TPropertyTexts& place, const std::string& text) {
    TIdentityTexts identities(key);
    LearnText(place, 0, text, identities);
    return ReplaceText(place, 0, text, identities);
}

TEST(ReplaceText, FollowsTheMeaningOfTheProperty) {
    TPseudonyms pseudonyms(key);
    EXPECT_EQ(Redact({"Card", "SerialNumber"}, "MB0099"), pseudonyms.Replace("MB0099"));
    EXPECT_EQ(Redact({"DiskDrive", "DeviceID"}, "naa.5000c500a1b2c3d4"),
              "naa." + pseudonyms.Replace("5000c500a1b2c3d4"));
    EXPECT_EQ(Redact({"ComputerSystem", "Name"}, "db-1.example.net"),
              pseudonyms.ReplaceHostName("db-1.example.net"));
    EXPECT_EQ(Redact({"ComputerSystem", "Name"}, "computer"), "computer");
    EXPECT_EQ(Redact({"LocalFileSystem", "Root"}, "/home/anna/data"),
              "/home/" + pseudonyms.Replace("anna") + "/data");
    EXPECT_EQ(Redact({"PCIDevice", "DeviceID"}, "0000:00:1f.2"), "0000:00:1f.2");
    EXPECT_EQ(Redact({"Card", "Model"}, "RS2200-MB"), "RS2200-MB");
}

TEST(ReplaceText, GivesReferencesTheKeyOfTheirResource) {
    EXPECT_EQ(
        Redact({"BasedOn", "Antecedent"}, "KELSG_DiskDrive.DeviceID=\"SAME01@0000:00:1f.2\""),
        "KELSG_DiskDrive.DeviceID=\"" + Redact({"DiskDrive", "DeviceID"}, "SAME01@0000:00:1f.2") + "\"");
}

TEST(ReplaceText, SelectsEntriesByTheirDescriptions) {
    TIdentityTexts identities(key);
    const std::vector<std::string> descriptions{"PCI function", "Serial number"};
    const TPropertyTexts place{"DiskDrive", "OtherIdentifyingInfo", &descriptions};
    EXPECT_EQ(ReplaceText(place, 0, "0000:01:00.0", identities), "0000:01:00.0");
    EXPECT_EQ(ReplaceText(place, 1, "ZTA0M00001", identities), TPseudonyms(key).Replace("ZTA0M00001"));
    EXPECT_NE(ReplaceText({"DiskDrive", "OtherIdentifyingInfo"}, 0, "unnamed77", identities), "unnamed77");
}

}  // namespace
}  // namespace NVORHOST
