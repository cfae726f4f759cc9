#include "writer/hardware_document.h"

#include "host/vor_exception.h"
#include "tests/doubles/cim_doubles.h"
#include "tests/doubles/host_doubles.h"
#include "tests/writer/listed_instances.h"
#include "tests/writer/spy_buffer.h"
#include "vorhost/model/memory_namespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using NDOUBLES::TNamespaceDouble;
using NKELVOR20::TVORException;
using NVORHOST::TMemoryNamespace;
using testing::ElementsAre;
using testing::ThrowsMessage;

constexpr char rootTag[] =
    "<ResourceCollection xmlns=\"" NOXINFO_NAMESPACE_URI "\" timestamp= \"2009-03-07T14:05:09+01:00\">\n";

class HardwareDocument : public testing::Test {
  protected:
    HardwareDocument() { NDOUBLES::ResetHost(); }

    boost::shared_ptr<TMemoryNamespace> collected = boost::make_shared<TMemoryNamespace>();
    std::ostringstream text;
    TLineOutput out{text};
};

TEST_F(HardwareDocument, HasNineLinesForAnEmptyNamespace) {
    WriteHardwareDocument(out, collected);
    EXPECT_EQ(text.str(), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + rootTag +
                              "<ResourceCollectionContext>\n"
                              "</ResourceCollectionContext>\n"
                              "<ResourceList resourceType=\"PhysicalElement\">\n"
                              "</ResourceList>\n"
                              "<ResourceList resourceType=\"LogicalDevice\">\n"
                              "</ResourceList>\n"
                              "</ResourceCollection>\n");
}

TEST_F(HardwareDocument, IsFlushedOnceForEachLine) {
    TSpyBuffer buffer;
    std::ostream stream(&buffer);
    TLineOutput streamOut(stream);
    WriteHardwareDocument(streamOut, collected);
    EXPECT_EQ(buffer.flushes.size(), 9U);
    EXPECT_EQ(buffer.flushes[1], rootTag);
}

TEST_F(HardwareDocument, ReadsTheTimeBeforeItWritesAnything) {
    NDOUBLES::Host().localTime = []() -> NKELVOR20::TCIMDateTime { throw std::runtime_error("clock"); };
    EXPECT_THAT([&] { WriteHardwareDocument(out, collected); }, ThrowsMessage<std::runtime_error>("clock"));
    EXPECT_EQ(text.str(), "");
}

TEST_F(HardwareDocument, IsWrittenAgainByASecondCall) {
    WriteHardwareDocument(out, collected);
    const std::string once = text.str();
    WriteHardwareDocument(out, collected);
    EXPECT_EQ(text.str(), once + once);
}

TEST_F(HardwareDocument, LooksClassesUpInOrder) {
    const auto spy = boost::make_shared<TNamespaceDouble>();
    WriteHardwareDocument(out, spy);
    EXPECT_THAT(
        spy->calls,
        ElementsAre("GetClass KELSG_ComputerSystem", "GetClass KELSG_OperatingSystem",
                    "GetClass KELSG_SystemSlot", "GetClass KELSG_SPDData", "GetClass KELSG_Card",
                    "GetClass KELSG_Processor", "GetClass KELSG_DiskDrive", "GetClass CIM_DiskDrive",
                    "GetClass KELSG_DisketteDrive", "GetClass KELSG_TapeDrive", "GetClass KELSG_CDROMDrive",
                    "GetClass KELSG_DVDDrive", "GetClass CIM_DiskPartition", "GetClass KELSG_ACPI",
                    "GetClass KELSG_MAS", "GetClass KELSG_LSILogicalDisk", "GetClass KELSG_LSIIDELogicalDisk",
                    "GetClass KELSG_srLogicalDisk", "GetClass KELSG_LogicalDisk",
                    "GetClass KELSG_IDEProtocolController", "GetClass KELSG_USBPort",
                    "GetClass KELSG_VideoController", "GetClass KELSG_PCIDevice", "GetClass KELSG_PCIBridge",
                    "GetClass KELSG_USBController"));
}

TEST_F(HardwareDocument, EndsWhereTheHostThrows) {
    const auto failing = boost::make_shared<TNamespaceDouble>();
    failing->before = [](const std::string& call) {
        if (call == "GetClass KELSG_SystemSlot") {
            throw TVORException(2);
        }
    };
    EXPECT_THROW(WriteHardwareDocument(out, failing), TVORException);
    EXPECT_EQ(text.str(), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + rootTag +
                              "<ResourceCollectionContext>\n"
                              "</ResourceCollectionContext>\n"
                              "<ResourceList resourceType=\"PhysicalElement\">\n");
}

TEST_F(HardwareDocument, ListsThreeTypesOfPhysicalElements) {
    for (const char* name : {"KELSG_Card", "KELSG_SPDData", "KELSG_SystemSlot"}) {
        AddKeyedInstance(*collected, name, "Tag");
    }
    AddKeyedInstance(*collected, "KELSG_Processor", "DeviceID");
    WriteHardwareList(out, "PhysicalElement", collected);
    EXPECT_THAT(ListedTypes(text.str()), ElementsAre("Slot", "PhysicalMemory", "Card"));
}

TEST_F(HardwareDocument, ListsTwentyClassesOfLogicalDevicesAndDvdDrivesAsDisketteDrives) {
    for (const char* name : {"KELSG_USBController",   "KELSG_PCIBridge",     "KELSG_PCIDevice",
                             "KELSG_VideoController", "KELSG_USBPort",       "KELSG_IDEProtocolController",
                             "KELSG_LogicalDisk",     "KELSG_srLogicalDisk", "KELSG_LSIIDELogicalDisk",
                             "KELSG_LSILogicalDisk",  "KELSG_MAS",           "KELSG_ACPI",
                             "CIM_DiskPartition",     "KELSG_DVDDrive",      "KELSG_CDROMDrive",
                             "KELSG_TapeDrive",       "KELSG_DisketteDrive", "CIM_DiskDrive",
                             "KELSG_DiskDrive",       "KELSG_Processor"}) {
        AddKeyedInstance(*collected, name, "DeviceID");
    }
    AddKeyedInstance(*collected, "KELSG_Card", "Tag");
    WriteHardwareList(out, "LogicalDevice", collected);
    EXPECT_THAT(
        ListedTypes(text.str()),
        ElementsAre("Processor", "DiskDrive", "DiskDrive", "DisketteDrive", "TapeDrive", "OpticalDrive",
                    "DisketteDrive", "DiskPartition", "Memory", "Memory", "LogicalVolume", "LogicalVolume",
                    "LogicalVolume", "LogicalVolume", "IDEController", "USBPort", "DisplayController",
                    "PCIDevice", "PCIBridge", "USBController"));
}

TEST_F(HardwareDocument, HasAnEmptyListForAnyOtherType) {
    AddKeyedInstance(*collected, "KELSG_Card", "Tag");
    for (const std::string type : {"", "physicalElement", "LOGICALDEVICE", "Card", "a&b"}) {
        text.str("");
        WriteHardwareList(out, type, collected);
        EXPECT_EQ(text.str(), "<ResourceList resourceType=\"" + type + "\">\n</ResourceList>\n");
    }
}

TEST_F(HardwareDocument, OmitsCatalogueClassesThatNoListNames) {
    AddKeyedInstance(*collected, "KELSG_Process", "ProcessID");
    AddKeyedInstance(*collected, "KELSG_IPProtocolEndpoint", "ElementName");
    AddKeyedInstance(*collected, "KELSG_srDiskGroup", "Tag");
    WriteHardwareDocument(out, collected);
    EXPECT_THAT(ListedTypes(text.str()), testing::IsEmpty());
}

TEST_F(HardwareDocument, ReleasesTheNamespace) {
    WriteHardwareDocument(out, collected);
    EXPECT_EQ(collected.use_count(), 1);
}

}  // namespace
