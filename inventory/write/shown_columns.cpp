#include "inventory/write/shown_columns.h"

#include "inventory/compare/part.h"
#include "inventory/model/meaning.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/part_words.h"
#include "text/numbers.h"

#include <algorithm>
#include <iterator>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;

// Returns the size of something that is made of blocks, with its unit.
std::string ShowBlocks(const TResource& resource, EUnit unit) {
    const auto blocks = ParseNumber<std::uint64_t>(resource.GetText("NumberOfBlocks"));
    const auto blockBytes = ParseNumber<std::uint64_t>(resource.GetText("BlockSize"));
    if (!blocks || !blockBytes || (*blocks != 0 && *blockBytes > UINT64_MAX / *blocks)) {
        return {};
    }
    const std::uint64_t bytes = *blocks * *blockBytes;
    return unit == EUnit::memoryBytes ? ShowBinary(bytes) : ShowDecimal(bytes, "B");
}

std::string ShowMemoryBlocks(const TResource& resource) {
    return ShowBlocks(resource, EUnit::memoryBytes);
}

std::string ShowStorageBlocks(const TResource& resource) {
    return ShowBlocks(resource, EUnit::storageBytes);
}

// Most file systems are writable, so that only the others need a word.
std::string ShowReadOnly(const TResource& resource) {
    return resource.GetText("ReadOnly") == "true" ? "read-only" : "";
}

constexpr std::string_view serialEntry[] = {"Serial number"};
constexpr std::string_view upperPorts[] = {"Bridge", "Upper port"};
constexpr std::string_view memoryOfGraphics[] = {"MaxMemorySupported"};
constexpr EWorth major = EWorth::major;
constexpr EWorth minor = EWorth::minor;
constexpr bool countsFilled = true;
constexpr bool showsFilled = false;
constexpr bool isDetail = true;

// clang-format off
constexpr TShownColumn generalColumns[] = {
    {"name", "Name"}, {"description", "Description"}, {"serial number", "SerialNumber", major, serialEntry},
};
constexpr TShownColumn memoryColumns[] = {
    {"slot", "Tag"}, {"size", "Capacity"}, {"kind", "MemoryType"}, {"form", "FormFactor", minor},
    {"speed", "Speed"}, {"runs at", "ConfiguredMemoryClockSpeed", minor}, {"maker", "Manufacturer"},
    {"part", "PartNumber"}, {"serial number", "SerialNumber"},
};
constexpr TShownColumn memorySlotColumns[] = {
    {"slot", "Name"}, {"bank", "BankLabel", minor}, {"description", "Description"},
};
constexpr TShownColumn memoryArrayColumns[] = {
    {"name", "Name"}, {"holds at most", "MaximumMemoryCapacity"}, {"description", "Description"},
};
constexpr TShownColumn processorColumns[] = {
    {"socket", "DeviceID"}, {"name", "Name"}, {"cores", "NumberOfEnabledCores"},
    {"threads", "NumberOfHardwareThreads", minor}, {"clock", "MaxClockSpeed"}, {"status", "OperationalStatus"},
    {"microcode", "FirmwareVersion", minor},
};
constexpr TShownColumn driveColumns[] = {
    {"name", "Name"}, {"size", "MaxMediaSize"}, {"kind", "Description", minor}, {"status", "OperationalStatus"},
    {"serial number", "Serial number"}, {"place", "", minor, {}, &DescribePlace}, {"firmware", "Firmware revision", minor},
    {"identity", "DeviceID", EWorth::minorBesideSerial},
};
constexpr TShownColumn partitionColumns[] = {
    {"name", "Name"}, {"size", "PartitionSize"}, {"description", "Description"},
};
constexpr TShownColumn volumeColumns[] = {
    {"name", "Name"}, {"size", "NumberOfBlocks", major, {}, &ShowStorageBlocks}, {"description", "Description"},
    {"status", "OperationalStatus"}, {"identity", "DeviceID", minor},
};
constexpr TShownColumn fileSystemColumns[] = {
    {"mounted on", "Root"}, {"type", "FileSystemType"}, {"size", "FileSystemSize"},
    {"free", "AvailableSpace"}, {"label", "Label"}, {"access", "ReadOnly", major, {}, &ShowReadOnly},
};
constexpr TShownColumn networkPortColumns[] = {
    {"name", "Name"}, {"description", "Description", minor}, {"speed", "Speed"}, {"status", "OperationalStatus"},
    {"address", "PermanentAddress"}, {"driver", "Driver", minor}, {"on", "PCI function", minor},
    {"part of", "Bond", major, upperPorts},
};
constexpr TShownColumn virtualPortColumns[] = {
    {"name", "Name"}, {"description", "Description"}, {"speed", "Speed"}, {"status", "OperationalStatus"},
    {"address", "NetworkAddresses", minor}, {"VLAN", "VLANID"}, {"part of", "Bond", major, upperPorts},
};
constexpr TShownColumn addressColumns[] = {
    {"on", "Description"}, {"IPv4", "IPv4Address"}, {"IPv6", "IPv6Address"},
};
constexpr TShownColumn slotColumns[] = {
    {"slot", "Name"}, {"kind", "ConnectorLayout"}, {"description", "Description"},
};
constexpr TShownColumn boardColumns[] = {
    {"name", "Name"}, {"description", "Description", minor}, {"maker", "Manufacturer", minor}, {"model", "Model", minor},
    {"version", "Version"}, {"serial number", "SerialNumber"}, {"asset tag", "UserTracking"},
};
constexpr TShownColumn firmwareColumns[] = {
    {"name", "Name"}, {"maker", "Manufacturer"}, {"version", "Version"}, {"date", "ReleaseDate"},
};
constexpr TShownColumn busColumns[] = {
    {"address", "DeviceID"}, {"name", "Name"},
};
constexpr TShownColumn pciPortColumns[] = {
    {"address", "DeviceID"}, {"driver", "Driver"}, {"slot", "Slot"}, {"speed", "Speed"},
    {"at most", "MaxSpeed"}, {"lanes", "LinkWidth"}, {"of", "MaxLinkWidth"}, {"NUMA node", "NUMANode", minor},
    {"power", "PowerState", minor}, {"serial number", "Serial number", minor},
};
constexpr TShownColumn graphicsColumns[] = {
    {"address", "DeviceID"}, {"name", "Name"}, {"memory", "VideoMemorySize", major, memoryOfGraphics},
};
constexpr TShownColumn outputColumns[] = {
    {"output", "Name"}, {"description", "Description"}, {"state", "EnabledState"},
};
constexpr TShownColumn portColumns[] = {
    {"port", "DeviceID"}, {"what is in it", "Description"}, {"speed", "Speed"},
};
constexpr TShownColumn cacheColumns[] = {
    {"name", "Name"}, {"size", "NumberOfBlocks", major, {}, &ShowMemoryBlocks}, {"description", "Description"},
};
constexpr TShownColumn batteryColumns[] = {
    {"name", "Name"}, {"designed for", "DesignCapacity", minor}, {"holds", "FullChargeCapacity"},
    {"chemistry", "Chemistry", minor}, {"cycles", "RechargeCount"}, {"serial number", "Serial number"},
};
constexpr TShownColumn powerSupplyColumns[] = {
    {"name", "Name"}, {"power", "TotalOutputPower"}, {"place", "Location"}, {"maker", "Manufacturer", minor},
    {"part", "Part number", minor}, {"serial number", "Serial number"}, {"description", "Description", minor},
};
constexpr TShownColumn settingColumns[] = {
    {"name", "Name"}, {"state", "CurrentValue"}, {"description", "Description", minor},
};
constexpr TShownColumn systemKindColumns[] = {
    {"name", "Name"}, {"kind", "Description"}, {"more", "OtherIdentifyingInfo"},
};

constexpr TShownColumns shownColumns[] = {
    {"",                  generalColumns},
    {"BasedOn",           {}},
    {"BIOSElement",       firmwareColumns},
    {"Battery",           batteryColumns},
    {"CADAT",             {}},
    {"CacheMemory",       cacheColumns},
    {"Card",              boardColumns},
    {"Chassis",           boardColumns},
    {"ComputerSystem",    systemKindColumns},
    {"DataSource",        {}},
    {"DesktopMonitor",    generalColumns},
    {"DeviceSAPImplementation", {}},
    {"DiskDrive",         driveColumns},
    {"DisketteDrive",     driveColumns},
    {"DiskPartition",     partitionColumns},
    {"DisplayController", graphicsColumns},
    {"ElementInConnector", {}},
    {"EthernetPort",      networkPortColumns},
    {"IBPort",            networkPortColumns},
    {"IDEController",     busColumns},
    {"IPProtocolEndpoint", addressColumns},
    {"LocalFileSystem",   fileSystemColumns},
    {"LogicalVolume",     volumeColumns},
    {"Memory",            {}},
    {"MemoryCapacity",    memoryArrayColumns},
    {"NetworkPort",       virtualPortColumns},
    {"OperatingSystem",   generalColumns},
    {"OpticalDrive",      driveColumns},
    {"PCIBridge",         busColumns},
    {"PCIDevice",         busColumns},
    {"PCIPort",           pciPortColumns, "", "", showsFilled, isDetail},
    {"PhysicalConnector", memorySlotColumns, "Description", "Empty memory slot", countsFilled},
    {"PhysicalMemory",    memoryColumns},
    {"PowerSupply",       powerSupplyColumns},
    {"Process",           {}},
    {"Processor",         processorColumns},
    {"ResidesOnExtent",   {}},
    {"SecuritySetting",   settingColumns},
    {"Server",            generalColumns},
    {"Slot",              slotColumns},
    {"SoftwareElement",   firmwareColumns},
    {"TapeDrive",         driveColumns},
    {"USBController",     busColumns},
    {"USBPort",           portColumns, "Speed", "0"},
    {"VideoHead",         outputColumns},
    {"WiFiPort",          networkPortColumns},
    {"srDiskGroup",       generalColumns},
};
// clang-format on

std::string ShowName(const TResource& resource, std::string_view name) {
    const TProperty* const property = name.empty() ? nullptr : resource.Find(name);
    return property == nullptr ? GetFact(resource, name) : ShowValue(resource.type, *property);
}

}  // namespace

const TShownColumns& GetShownColumns(std::string_view type) {
    const auto* const row = std::ranges::find(shownColumns, type, &TShownColumns::type);
    return row == std::end(shownColumns) ? shownColumns[0] : *row;
}

std::string ShowColumn(const TResource& resource, const TShownColumn& column) {
    if (column.show != nullptr) {
        return column.show(resource);
    }
    std::string text = ShowName(resource, column.property);
    for (std::size_t i = 0; text.empty() && i < column.others.size(); ++i) {
        text = ShowName(resource, column.others[i]);
    }
    return text;
}

bool IsShownInTables(const TShownColumns& columns, const TResource& resource) {
    const auto rest = columns.columns.subspan(columns.columns.empty() ? 0 : 1);
    const bool hasMore = std::ranges::any_of(
        rest, [&](const TShownColumn& column) { return !ShowColumn(resource, column).empty(); });
    return columns.IsShown() && (!columns.isDetail || hasMore);
}

bool IsEmptyPlace(const TShownColumns& columns, const TResource& resource) {
    if (columns.emptyProperty.empty()) {
        return false;
    }
    const std::string_view value = resource.GetText(columns.emptyProperty);
    return value.substr(0, value.find(',')) == columns.emptyValue;
}

}  // namespace NINVENTORY
