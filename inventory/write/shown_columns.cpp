#include "inventory/write/shown_columns.h"

#include <algorithm>
#include <iterator>

namespace NINVENTORY {
namespace {

// clang-format off
constexpr TShownColumn generalColumns[] = {
    {"name", "Name"}, {"description", "Description"}, {"serial number", "SerialNumber"},
};
constexpr TShownColumn memoryColumns[] = {
    {"slot", "Tag"}, {"size", "Capacity"}, {"kind", "MemoryType"}, {"form", "FormFactor"},
    {"speed", "Speed"}, {"runs at", "ConfiguredMemoryClockSpeed"}, {"maker", "Manufacturer"},
    {"part", "PartNumber"}, {"serial number", "SerialNumber"},
};
constexpr TShownColumn memorySlotColumns[] = {
    {"slot", "Name"}, {"bank", "BankLabel"}, {"description", "Description"},
};
constexpr TShownColumn processorColumns[] = {
    {"socket", "DeviceID"}, {"name", "Name"}, {"cores", "NumberOfEnabledCores"}, {"clock", "MaxClockSpeed"},
    {"status", "OperationalStatus"}, {"microcode", "FirmwareVersion"},
};
constexpr TShownColumn driveColumns[] = {
    {"name", "Name"}, {"size", "MaxMediaSize"}, {"kind", "Description"}, {"status", "OperationalStatus"},
    {"identity", "DeviceID"},
};
constexpr TShownColumn partitionColumns[] = {
    {"name", "Name"}, {"size", "PartitionSize"}, {"description", "Description"},
};
constexpr TShownColumn volumeColumns[] = {
    {"name", "Name"}, {"description", "Description"}, {"status", "OperationalStatus"}, {"identity", "DeviceID"},
};
constexpr TShownColumn fileSystemColumns[] = {
    {"mounted on", "Root"}, {"type", "FileSystemType"}, {"size", "FileSystemSize"},
    {"free", "AvailableSpace"}, {"label", "Name"},
};
constexpr TShownColumn networkPortColumns[] = {
    {"name", "Name"}, {"description", "Description"}, {"speed", "Speed"}, {"status", "OperationalStatus"},
    {"address", "PermanentAddress"}, {"on", "OtherIdentifyingInfo"},
};
constexpr TShownColumn addressColumns[] = {
    {"on", "Description"}, {"IPv4", "IPv4Address"}, {"IPv6", "IPv6Address"},
};
constexpr TShownColumn slotColumns[] = {
    {"slot", "Name"}, {"kind", "ConnectorLayout"}, {"description", "Description"},
};
constexpr TShownColumn boardColumns[] = {
    {"name", "Name"}, {"description", "Description"}, {"maker", "Manufacturer"}, {"model", "Model"},
    {"version", "Version"}, {"serial number", "SerialNumber"},
};
constexpr TShownColumn firmwareColumns[] = {
    {"name", "Name"}, {"maker", "Manufacturer"}, {"version", "Version"}, {"date", "ReleaseDate"},
};
constexpr TShownColumn busColumns[] = {
    {"address", "DeviceID"}, {"name", "Name"}, {"driver", "Driver"},
};
constexpr TShownColumn portColumns[] = {
    {"port", "DeviceID"}, {"what is in it", "Description"}, {"speed", "Speed"},
};
constexpr TShownColumn cacheColumns[] = {
    {"name", "Name"}, {"description", "Description"},
};

constexpr TShownColumns shownColumns[] = {
    {"",                  generalColumns},
    {"BasedOn",           {}},
    {"BIOSElement",       firmwareColumns},
    {"CADAT",             {}},
    {"CacheMemory",       cacheColumns},
    {"Card",              boardColumns},
    {"Chassis",           boardColumns},
    {"DeviceSAPImplementation", {}},
    {"DataSource",        {}},
    {"DiskDrive",         driveColumns},
    {"DisketteDrive",     driveColumns},
    {"DiskPartition",     partitionColumns},
    {"DisplayController", busColumns},
    {"ElementInConnector", {}},
    {"EthernetPort",      networkPortColumns},
    {"IBPort",            networkPortColumns},
    {"IDEController",     busColumns},
    {"IPProtocolEndpoint", addressColumns},
    {"LocalFileSystem",   fileSystemColumns},
    {"LogicalVolume",     volumeColumns},
    {"Memory",            {}},
    {"MemoryCapacity",    {}},
    {"NetworkPort",       networkPortColumns},
    {"OpticalDrive",      driveColumns},
    {"PCIBridge",         busColumns},
    {"PCIDevice",         busColumns},
    {"PhysicalConnector", memorySlotColumns},
    {"PhysicalMemory",    memoryColumns},
    {"Process",           {}},
    {"Processor",         processorColumns},
    {"Slot",              slotColumns},
    {"ResidesOnExtent",   {}},
    {"SoftwareElement",   firmwareColumns},
    {"TapeDrive",         driveColumns},
    {"USBController",     busColumns},
    {"USBPort",           portColumns, "Speed", "0"},
    {"WiFiPort",          networkPortColumns},
};
// clang-format on

}  // namespace

std::vector<std::string> TShownColumns::GetTitles() const {
    std::vector<std::string> titles;
    for (const TShownColumn& column : columns) {
        titles.emplace_back(column.title);
    }
    return titles;
}

const TShownColumns& GetShownColumns(std::string_view type) {
    const auto* const row = std::ranges::find(shownColumns, type, &TShownColumns::type);
    return row == std::end(shownColumns) ? shownColumns[0] : *row;
}

bool IsEmptyPlace(const TShownColumns& columns, const TResource& resource) {
    return !columns.emptyProperty.empty() && resource.GetText(columns.emptyProperty) == columns.emptyValue;
}

}  // namespace NINVENTORY
