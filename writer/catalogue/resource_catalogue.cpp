#include "writer/catalogue/resource_catalogue.h"

#include <algorithm>

namespace {

struct TSourceName {
    std::string_view name;
};

/// Names the property of the instance if it differs from the name in the document.
constexpr TSourceName From(std::string_view sourceName) {
    return {sourceName};
}

constexpr TPropertyRow Property(std::string_view name) {
    return {name, name, EValueOrigin::instance};
}

constexpr TPropertyRow Property(std::string_view name, TSourceName source) {
    return {name, source.name, EValueOrigin::instance};
}

constexpr TPropertyRow Property(std::string_view name, EValueOrigin origin) {
    return {name, {}, origin};
}

constexpr TCommonHead HeadWithName(TSourceName source) {
    return {Property("Name", source), Property("Description"),
            Property("ObjectType", EValueOrigin::resourceType)};
}

constexpr TCommonHead commonHead = HeadWithName(From("ElementName"));
// "GetHostName" is not a property: the writer substitutes the operating system's name. The Name of a computer
// is its UUID, written as SystemBoardUUID.
constexpr TCommonHead computerSystemHead = HeadWithName(From("GetHostName"));

// One property per line, so that a difference shows one property per line.
// clang-format off
constexpr TPropertyRow processProperties[] = {
    Property("CreationDate"),
    Property("ExecutionState"),
    Property("Priority"),
    Property("TerminationDate"),
};

constexpr TPropertyRow processorProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("AddressWidth"),
    Property("CurrentClockSpeed"),
    Property("DataWidth"),
    Property("Family"),
    Property("MaxClockSpeed"),
    Property("UniqueID"),
};

constexpr TPropertyRow mediaDriveProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("DefaultBlockSize"),
    Property("LoadTime"),
    Property("MaxAccessTime"),
    Property("MaxBlockSize"),
    Property("MaxMediaSize"),
    Property("MediaIsLocked"),
    Property("MinBlockSize"),
    Property("MountCount"),
    Property("NeedsCleaning"),
    Property("TimeOfLastMount"),
    Property("TotalMountTime"),
    Property("UnloadTime"),
};

constexpr TPropertyRow diskPartitionProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("ConsumableBlocks"),
    Property("DataOrganization"),
    Property("DataRedundancy"),
    Property("DeltaReservation"),
    Property("NumberOfBlocks"),
    Property("PackageRedundancy"),
    Property("SequentialAccess"),
    Property("Bootable"),
    Property("PartitionSize", From("Size")),
    Property("PartitionSubtype"),
    Property("PartitionType"),
    Property("PrimaryPartition"),
};

constexpr TPropertyRow memoryProperties[] = {
    Property("DeviceID"),
    Property("BlockSize"),
    Property("ConsumableBlocks"),
    Property("DataOrganization"),
    Property("DataRedundancy"),
    Property("DeltaReservation"),
    Property("NumberOfBlocks"),
    Property("PackageRedundancy"),
    Property("SequentialAccess"),
    Property("EndingAddress"),
    Property("StartingAddress"),
    Property("Volatile"),
};

constexpr TPropertyRow logicalDiskProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("BlockSize"),
    Property("ConsumableBlocks"),
    Property("DataOrganization"),
    Property("DataRedundancy"),
    Property("DeltaReservation"),
    Property("NumberOfBlocks"),
    Property("PackageRedundancy"),
    Property("SequentialAccess"),
};

constexpr TPropertyRow ideControllerProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
};

constexpr TPropertyRow usbPortProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("MaxSpeed"),
    Property("Speed"),
};

constexpr TPropertyRow videoControllerProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("MaxNumberControlled"),
    Property("ProtocolSupported"),
    Property("TimeOfLastReset"),
    Property("MaxMemorySupported"),
    Property("NumberOfVideoPages"),
    Property("VideoMemoryType"),
};

constexpr TPropertyRow pciDeviceProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("MaxNumberControlled"),
    Property("ProtocolSupported"),
    Property("TimeOfLastReset"),
    Property("CacheLineSize"),
    Property("ClassCode"),
    Property("DeviceSelectTiming"),
    Property("ExpansionROMBaseAddress"),
    Property("InterruptPin"),
    Property("LatencyTimer"),
    Property("SelfTestEnabled"),
    Property("BaseAddress"),
    Property("MaxLatency"),
    Property("MinGrantTime"),
    Property("SubsystemID"),
    Property("SubsystemVendorID"),
};

constexpr TPropertyRow pciBridgeProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("MaxNumberControlled"),
    Property("ProtocolSupported"),
    Property("TimeOfLastReset"),
    Property("CacheLineSize"),
    Property("ClassCode"),
    Property("DeviceSelectTiming"),
    Property("ExpansionROMBaseAddress"),
    Property("InterruptPin"),
    Property("LatencyTimer"),
    Property("SelfTestEnabled"),
    Property("BaseAddress"),
    Property("BridgeType"),
    Property("IOBase"),
    Property("IOLimit"),
    Property("MemoryBase"),
    Property("MemoryLimit"),
    Property("PrimaryBusNumber"),
    Property("SecondaryBusNumber"),
    Property("SubordinateBusNumber"),
};

constexpr TPropertyRow usbControllerProperties[] = {
    Property("DeviceID"),
    Property("OperationalStatus"),
    Property("MaxNumberControlled"),
    Property("ProtocolSupported"),
    Property("TimeOfLastReset"),
    Property("InterfaceType"),
    Property("USBVersion"),
};

constexpr TPropertyRow computerSystemProperties[] = {
    Property("OperationalStatus"),
    Property("PrimaryOwnerContact"),
    Property("PrimaryOwnerName"),
    Property("Dedicated"),
    Property("Manufacturer"),
    Property("MachineType", From("ProductName")),
    Property("Model", From("ProductName")),
    Property("SerialNumber"),
    Property("SystemBoardUUID", From("Name")),
};

constexpr TPropertyRow operatingSystemProperties[] = {
    Property("OperationalStatus"),
    Property("CurrentTimeZone"),
    Property("DefaultPageSize", From("PageSize")),
    Property("FreePhysicalMemory"),
    Property("FreeVirtualMemory"),
    Property("KernelRelease"),
    Property("LastBootUpTime"),
    Property("LocalDateTime"),
    Property("NumberOfLicensedUsers"),
    Property("NumberOfProcesses"),
    Property("NumberOfUsers"),
    Property("OSType"),
    Property("OSVersion", From("Version")),
    Property("TotalSwapSpaceSize"),
    Property("TotalVirtualMemorySize"),
    Property("TotalVisibleMemorySize"),
};

constexpr TPropertyRow ipEndpointProperties[] = {
    Property("OperationalStatus"),
    Property("IPv4Address"),
    Property("IPv6Address"),
};

constexpr TPropertyRow systemSlotProperties[] = {
    Property("ManufactureDate"),
    Property("Manufacturer"),
    Property("Model"),
    Property("PartNumber"),
    Property("SerialNumber"),
    Property("Tag"),
    Property("Version"),
    Property("ConnectorGender"),
    Property("ConnectorLayout"),
    Property("ConnectorPinout"),
    Property("NumPhysicalPins"),
    Property("HeightAllowed"),
    Property("LengthAllowed"),
    Property("MaxDataWidth"),
    Property("Number"),
    Property("OpenSwitch"),
    Property("SpecialPurpose"),
    Property("SupportsHotPlug"),
    Property("ThermalRating"),
};

constexpr TPropertyRow memoryModuleProperties[] = {
    Property("ManufactureDate"),
    Property("Manufacturer"),
    Property("Model"),
    Property("PartNumber"),
    Property("SerialNumber"),
    Property("Tag"),
    Property("GUID", EValueOrigin::resourceId),
    Property("Version"),
    Property("RemovalConditions"),
    Property("FormFactor"),
    Property("BankLabel"),
    Property("Capacity"),
    Property("DataWidth"),
    Property("InterleavePosition"),
    Property("MemoryType"),
    Property("PositionInRow"),
    Property("Speed"),
    Property("TotalWidth"),
};

constexpr TPropertyRow cardProperties[] = {
    Property("ManufactureDate"),
    Property("Manufacturer"),
    Property("Model"),
    Property("PartNumber"),
    Property("SerialNumber"),
    Property("Tag"),
    Property("GUID", EValueOrigin::resourceId),
    Property("Version"),
    Property("RemovalConditions"),
    Property("UserTracking"),
    Property("HostingBoard"),
    Property("RequiresDaughterBoard"),
    Property("SpecialRequirements"),
};

constexpr TPropertyRow diskGroupProperties[] = {
    Property("CollectionID"),
    Property("GUID", EValueOrigin::resourceId),
};

constexpr std::array<TResourceClass, resourceClassCount> catalogue = {{
    {"KELSG_Process",               "ProcessID",   commonHead,         processProperties},
    {"KELSG_Processor",             "DeviceID",    commonHead,         processorProperties},
    {"CIM_DiskDrive",               "DeviceID",    commonHead,         mediaDriveProperties},
    {"KELSG_DiskDrive",             "DeviceID",    commonHead,         mediaDriveProperties},
    {"KELSG_DisketteDrive",         "DeviceID",    commonHead,         mediaDriveProperties},
    {"KELSG_TapeDrive",             "DeviceID",    commonHead,         mediaDriveProperties},
    {"KELSG_CDROMDrive",            "DeviceID",    commonHead,         mediaDriveProperties},
    {"KELSG_DVDDrive",              "DeviceID",    commonHead,         mediaDriveProperties},
    {"CIM_DiskPartition",           "DeviceID",    commonHead,         diskPartitionProperties},
    {"KELSG_ACPI",                  "DeviceID",    commonHead,         memoryProperties},
    {"KELSG_MAS",                   "DeviceID",    commonHead,         memoryProperties},
    {"KELSG_LSILogicalDisk",        "DeviceID",    commonHead,         logicalDiskProperties},
    {"KELSG_LSIIDELogicalDisk",     "DeviceID",    commonHead,         logicalDiskProperties},
    {"KELSG_srLogicalDisk",         "DeviceID",    commonHead,         logicalDiskProperties},
    {"KELSG_LogicalDisk",           "DeviceID",    commonHead,         logicalDiskProperties},
    {"KELSG_IDEProtocolController", "DeviceID",    commonHead,         ideControllerProperties},
    {"KELSG_USBPort",               "DeviceID",    commonHead,         usbPortProperties},
    {"KELSG_VideoController",       "DeviceID",    commonHead,         videoControllerProperties},
    {"KELSG_PCIDevice",             "DeviceID",    commonHead,         pciDeviceProperties},
    {"KELSG_PCIBridge",             "DeviceID",    commonHead,         pciBridgeProperties},
    {"KELSG_USBController",         "DeviceID",    commonHead,         usbControllerProperties},
    {"KELSG_ComputerSystem",        "Name",        computerSystemHead, computerSystemProperties},
    {"KELSG_OperatingSystem",       "ElementName", commonHead,         operatingSystemProperties},
    {"KELSG_IPProtocolEndpoint",    "ElementName", commonHead,         ipEndpointProperties},
    {"KELSG_SystemSlot",            "Tag",         commonHead,         systemSlotProperties},
    {"KELSG_SPDData",               "Tag",         commonHead,         memoryModuleProperties},
    {"KELSG_Card",                  "Tag",         commonHead,         cardProperties},
    {"KELSG_srDiskGroup",           "Tag",         commonHead,         diskGroupProperties},
}};
// clang-format on

}  // namespace

std::span<const TResourceClass, resourceClassCount> GetResourceCatalogue() noexcept {
    return catalogue;
}

const TResourceClass* FindResourceClass(std::string_view className) noexcept {
    const auto* const found = std::ranges::find(catalogue, className, &TResourceClass::className);
    return found == catalogue.end() ? nullptr : found;
}
