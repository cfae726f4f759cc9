#include "writer/catalogue/resource_catalogue.h"

#include "tests/doubles/host_doubles.h"
#include "vorhost/model/memory_namespace.h"
#include "writer/nox_xml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAreArray;

// The expected catalogue: each class with its key, then its properties in order. A<B means that A is read
// from B; #type is the resource type, #id the identifier.
constexpr char listing[] = R"(
KELSG_Process ProcessID
    Name<ElementName Description ObjectType<#type CreationDate ExecutionState Priority TerminationDate
KELSG_Processor DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus AddressWidth
    CurrentClockSpeed DataWidth Family MaxClockSpeed UniqueID
CIM_DiskDrive DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus DefaultBlockSize LoadTime
    MaxAccessTime MaxBlockSize MaxMediaSize MediaIsLocked MinBlockSize MountCount NeedsCleaning
    TimeOfLastMount TotalMountTime UnloadTime
KELSG_DiskDrive DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus DefaultBlockSize LoadTime
    MaxAccessTime MaxBlockSize MaxMediaSize MediaIsLocked MinBlockSize MountCount NeedsCleaning
    TimeOfLastMount TotalMountTime UnloadTime
KELSG_DisketteDrive DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus DefaultBlockSize LoadTime
    MaxAccessTime MaxBlockSize MaxMediaSize MediaIsLocked MinBlockSize MountCount NeedsCleaning
    TimeOfLastMount TotalMountTime UnloadTime
KELSG_TapeDrive DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus DefaultBlockSize LoadTime
    MaxAccessTime MaxBlockSize MaxMediaSize MediaIsLocked MinBlockSize MountCount NeedsCleaning
    TimeOfLastMount TotalMountTime UnloadTime
KELSG_CDROMDrive DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus DefaultBlockSize LoadTime
    MaxAccessTime MaxBlockSize MaxMediaSize MediaIsLocked MinBlockSize MountCount NeedsCleaning
    TimeOfLastMount TotalMountTime UnloadTime
KELSG_DVDDrive DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus DefaultBlockSize LoadTime
    MaxAccessTime MaxBlockSize MaxMediaSize MediaIsLocked MinBlockSize MountCount NeedsCleaning
    TimeOfLastMount TotalMountTime UnloadTime
CIM_DiskPartition DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus ConsumableBlocks
    DataOrganization DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess
    Bootable PartitionSize<Size PartitionSubtype PartitionType PrimaryPartition
KELSG_ACPI DeviceID
    Name<ElementName Description ObjectType<#type DeviceID BlockSize ConsumableBlocks DataOrganization
    DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess EndingAddress
    StartingAddress Volatile
KELSG_MAS DeviceID
    Name<ElementName Description ObjectType<#type DeviceID BlockSize ConsumableBlocks DataOrganization
    DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess EndingAddress
    StartingAddress Volatile
KELSG_LSILogicalDisk DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus BlockSize ConsumableBlocks
    DataOrganization DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess
KELSG_LSIIDELogicalDisk DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus BlockSize ConsumableBlocks
    DataOrganization DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess
KELSG_srLogicalDisk DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus BlockSize ConsumableBlocks
    DataOrganization DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess
KELSG_LogicalDisk DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus BlockSize ConsumableBlocks
    DataOrganization DataRedundancy DeltaReservation NumberOfBlocks PackageRedundancy SequentialAccess
KELSG_IDEProtocolController DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus
KELSG_USBPort DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus MaxSpeed Speed
KELSG_VideoController DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus MaxNumberControlled
    ProtocolSupported TimeOfLastReset MaxMemorySupported NumberOfVideoPages VideoMemoryType
KELSG_PCIDevice DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus MaxNumberControlled
    ProtocolSupported TimeOfLastReset CacheLineSize ClassCode DeviceSelectTiming ExpansionROMBaseAddress
    InterruptPin LatencyTimer SelfTestEnabled BaseAddress MaxLatency MinGrantTime SubsystemID
    SubsystemVendorID
KELSG_PCIBridge DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus MaxNumberControlled
    ProtocolSupported TimeOfLastReset CacheLineSize ClassCode DeviceSelectTiming ExpansionROMBaseAddress
    InterruptPin LatencyTimer SelfTestEnabled BaseAddress BridgeType IOBase IOLimit MemoryBase
    MemoryLimit PrimaryBusNumber SecondaryBusNumber SubordinateBusNumber
KELSG_USBController DeviceID
    Name<ElementName Description ObjectType<#type DeviceID OperationalStatus MaxNumberControlled
    ProtocolSupported TimeOfLastReset InterfaceType USBVersion
KELSG_ComputerSystem Name
    Name<GetHostName Description ObjectType<#type OperationalStatus PrimaryOwnerContact PrimaryOwnerName
    Dedicated Manufacturer MachineType<ProductName Model<ProductName SerialNumber SystemBoardUUID<Name
KELSG_OperatingSystem ElementName
    Name<ElementName Description ObjectType<#type OperationalStatus CurrentTimeZone
    DefaultPageSize<PageSize FreePhysicalMemory FreeVirtualMemory KernelRelease LastBootUpTime
    LocalDateTime NumberOfLicensedUsers NumberOfProcesses NumberOfUsers OSType OSVersion<Version
    TotalSwapSpaceSize TotalVirtualMemorySize TotalVisibleMemorySize
KELSG_IPProtocolEndpoint ElementName
    Name<ElementName Description ObjectType<#type OperationalStatus IPv4Address IPv6Address
KELSG_SystemSlot Tag
    Name<ElementName Description ObjectType<#type ManufactureDate Manufacturer Model PartNumber
    SerialNumber Tag Version ConnectorGender ConnectorLayout ConnectorPinout NumPhysicalPins
    HeightAllowed LengthAllowed MaxDataWidth Number OpenSwitch SpecialPurpose SupportsHotPlug
    ThermalRating
KELSG_SPDData Tag
    Name<ElementName Description ObjectType<#type ManufactureDate Manufacturer Model PartNumber
    SerialNumber Tag GUID<#id Version RemovalConditions FormFactor BankLabel Capacity DataWidth
    InterleavePosition MemoryType PositionInRow Speed TotalWidth
KELSG_Card Tag
    Name<ElementName Description ObjectType<#type ManufactureDate Manufacturer Model PartNumber
    SerialNumber Tag GUID<#id Version RemovalConditions UserTracking HostingBoard RequiresDaughterBoard
    SpecialRequirements
KELSG_srDiskGroup Tag
    Name<ElementName Description ObjectType<#type CollectionID GUID<#id
)";

struct TListedProperty {
    std::string output;
    std::string source;
};

struct TListedClass {
    std::string name;
    std::string key;
    std::vector<TListedProperty> properties;
};

std::vector<TListedClass> ReadListing() {
    std::vector<TListedClass> classes;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        if (line.starts_with(' ')) {
            while (words >> word) {
                const std::size_t from = word.find('<');
                classes.back().properties.push_back(
                    {word.substr(0, from), from == std::string::npos ? word : word.substr(from + 1)});
            }
        } else if (words >> word) {
            classes.push_back({word, {}, {}});
            words >> classes.back().key;
        }
    }
    return classes;
}

const std::vector<TListedClass>& Listing() {
    static const std::vector<TListedClass> classes = ReadListing();
    return classes;
}

std::vector<TPropertyRow> RowsOf(const TResourceClass& resourceClass) {
    std::vector<TPropertyRow> rows(resourceClass.head.begin(), resourceClass.head.end());
    rows.insert(rows.end(), resourceClass.properties.begin(), resourceClass.properties.end());
    return rows;
}

std::string SourceAsListed(const TPropertyRow& row) {
    switch (row.origin) {
        case EValueOrigin::resourceType:
            return "#type";
        case EValueOrigin::resourceId:
            return "#id";
        case EValueOrigin::instance:
            break;
    }
    return std::string(row.sourceName);
}

TEST(Catalogue, ListsTwentyEightClassesInOrderWithTheirKeys) {
    ASSERT_EQ(Listing().size(), 28U);
    ASSERT_EQ(GetResourceCatalogue().size(), 28U);
    for (std::size_t row = 0; row < 28; ++row) {
        EXPECT_EQ(GetResourceCatalogue()[row].className, Listing()[row].name);
        EXPECT_EQ(GetResourceCatalogue()[row].keyProperty, Listing()[row].key);
    }
}

TEST(Catalogue, ListsThePropertiesOfEachClassInOrderWithTheirSources) {
    for (std::size_t row = 0; row < 28; ++row) {
        const auto rows = RowsOf(GetResourceCatalogue()[row]);
        const auto& listed = Listing()[row].properties;
        ASSERT_EQ(rows.size(), listed.size()) << Listing()[row].name;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i].outputName, listed[i].output) << Listing()[row].name;
            EXPECT_EQ(SourceAsListed(rows[i]), listed[i].source) << Listing()[row].name;
        }
    }
}

TEST(Catalogue, Has397PropertyRows) {
    std::vector<std::size_t> counts;
    std::size_t total = 0;
    for (const TResourceClass& resourceClass : GetResourceCatalogue()) {
        counts.push_back(RowsOf(resourceClass).size());
        total += counts.back();
    }
    EXPECT_THAT(counts, ElementsAreArray({7,  11, 17, 17, 17, 17, 17, 17, 17, 15, 15, 13, 13, 13,
                                          13, 5,  7,  11, 20, 24, 10, 12, 19, 6,  22, 21, 16, 5}));
    EXPECT_EQ(total, 397U);
}

TEST(Catalogue, HasNoDuplicateClassOrProperty) {
    std::set<std::string_view> classes;
    for (const TResourceClass& resourceClass : GetResourceCatalogue()) {
        EXPECT_TRUE(classes.insert(resourceClass.className).second) << resourceClass.className;
        std::set<std::string_view> outputs;
        for (const TPropertyRow& row : RowsOf(resourceClass)) {
            EXPECT_TRUE(outputs.insert(row.outputName).second) << row.outputName;
        }
    }
}

TEST(Catalogue, FindsAClassByItsExactName) {
    for (const TResourceClass& resourceClass : GetResourceCatalogue()) {
        EXPECT_EQ(FindResourceClass(resourceClass.className), &resourceClass);
    }
    EXPECT_EQ(FindResourceClass("kelsg_processor"), nullptr);
    EXPECT_EQ(FindResourceClass("KELSG_ProcessorX"), nullptr);
    EXPECT_EQ(FindResourceClass(""), nullptr);
}

/// Renders one instance of each class.
class CatalogueClass : public testing::TestWithParam<std::size_t> {
  protected:
    CatalogueClass() { NDOUBLES::ResetHost(); }

    const TListedClass& Listed() const { return Listing()[GetParam()]; }

    /// Renders an instance that has the listed properties and one other, each with the value "value of" and
    /// the property's name.
    std::string Render() {
        const auto collected = boost::make_shared<NVORHOST::TMemoryNamespace>();
        const auto instance = collected->AddClass(Listed().name)->NewInstance();
        std::set<std::string> sources = {Listed().key, "NotInTheCatalogue"};
        for (const TListedProperty& property : Listed().properties) {
            const bool isSpecial = property.source.starts_with('#') || property.source == "GetHostName";
            if (!isSpecial) {
                sources.insert(property.source);
            }
        }
        for (const std::string& source : sources) {
            instance->Set(source, NKELVOR20::TCIMValue("value of " + source));
        }
        instance->CommitInstance({});
        std::ostringstream out;
        TNOXXMLWriterImpl(out).WriteResourceInstance(Listed().name, "Listed", collected, /*flag=*/false);
        return out.str();
    }

    std::string Identifier() const {
        const auto instance = boost::make_shared<NVORHOST::TMemoryNamespace>()->AddClass("C")->NewInstance();
        instance->Set(Listed().key, NKELVOR20::TCIMValue("value of " + Listed().key));
        return TNOXXMLWriterImpl::GetResourceID("Listed", instance, Listed().key, "", "");
    }

    std::string ValueOf(const std::string& source) const {
        if (source == "#type") {
            return "Listed";
        }
        if (source == "#id") {
            return Identifier();
        }
        return source == "GetHostName" ? "Debian GNU/Linux 12 (bookworm)" : "value of " + source;
    }
};

TEST_P(CatalogueClass, IsWrittenRowByRowAndWithoutOtherProperties) {
    std::string expected = "<ResourceInstance resourceId=\"" + Identifier() + "\" resourceType=\"Listed\">\n";
    for (const TListedProperty& property : Listed().properties) {
        expected += "<Property name=\"" + property.output + "\" type=\"string\">\n";
        expected += "<Value>" + ValueOf(property.source) + "</Value>\n";
        expected += "</Property>\n";
    }
    expected += "</ResourceInstance>\n";
    EXPECT_EQ(Render(), expected);
}

INSTANTIATE_TEST_SUITE_P(AllClasses, CatalogueClass, testing::Range(std::size_t{0}, std::size_t{28}),
                         [](const auto& param) { return Listing()[param.param].name; });

}  // namespace
