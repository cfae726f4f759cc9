#include "inventory/model/resource_type.h"

#include "writer/catalogue/resource_catalogue.h"

#include <algorithm>
#include <iterator>

namespace NINVENTORY {
namespace {

constexpr std::string_view context;
constexpr std::string_view physical = "PhysicalElement";
constexpr std::string_view logical = "LogicalDevice";
constexpr std::string_view none = "-";

// Only rows of a class with a list, or of the context, are in documents.
// clang-format off
constexpr TResourceType rows[] = {
    {"KELSG_ComputerSystem",        "Server",             context,  "SystemBoardUUID", "machine",               "machines"},
    {"KELSG_OperatingSystem",       "OperatingSystem",    context,  "Name",            "operating system",      "operating systems"},
    {"CIM_ComputerSystem",          "ComputerSystem",     none,     "Name",            "kind of system",        "kinds of systems"},
    {"KELSG_SecuritySetting",       "SecuritySetting",    none,     "InstanceID",      "security setting",      "security settings"},
    {"CIM_BIOSElement",             "BIOSElement",        none,     "Name",            "system firmware",       "system firmware"},
    {"CIM_SoftwareElement",         "SoftwareElement",    none,     "Name",            "firmware of a part",    "firmware of parts"},
    {"CIM_Chassis",                 "Chassis",            none,     "Tag",             "chassis",               "chassis"},
    {"KELSG_Card",                  "Card",               physical, "Tag",             "board",                 "boards"},
    {"KELSG_Processor",             "Processor",          logical,  "DeviceID",        "processor",             "processors"},
    {"CIM_CacheMemory",             "CacheMemory",        none,     "DeviceID",        "cache",                 "caches"},
    {"KELSG_SPDData",               "PhysicalMemory",     physical, "Tag",             "memory module",         "memory modules"},
    {"CIM_PhysicalConnector",       "PhysicalConnector",  none,     "Tag",             "memory slot",           "memory slots"},
    {"CIM_MemoryCapacity",          "MemoryCapacity",     none,     "Name",            "memory array",          "memory arrays"},
    {"KELSG_DiskDrive",             "DiskDrive",          logical,  "DeviceID",        "disk",                  "disks"},
    {"CIM_DiskDrive",               "DiskDrive",          logical,  "DeviceID",        "disk",                  "disks"},
    {"KELSG_LSILogicalDisk",        "LogicalVolume",      logical,  "DeviceID",        "volume",                "volumes"},
    {"KELSG_LSIIDELogicalDisk",     "LogicalVolume",      logical,  "DeviceID",        "volume",                "volumes"},
    {"KELSG_srLogicalDisk",         "LogicalVolume",      logical,  "DeviceID",        "volume",                "volumes"},
    {"KELSG_LogicalDisk",           "LogicalVolume",      logical,  "DeviceID",        "volume",                "volumes"},
    {"CIM_DiskPartition",           "DiskPartition",      logical,  "DeviceID",        "partition",             "partitions"},
    {"CIM_LocalFileSystem",         "LocalFileSystem",    none,     "Name",            "file system",           "file systems"},
    {"KELSG_CDROMDrive",            "OpticalDrive",       logical,  "DeviceID",        "optical drive",         "optical drives"},
    {"KELSG_DVDDrive",              "DisketteDrive",      logical,  "DeviceID",        "diskette or DVD drive", "diskette and DVD drives"},
    {"KELSG_DisketteDrive",         "DisketteDrive",      logical,  "DeviceID",        "diskette or DVD drive", "diskette and DVD drives"},
    {"KELSG_TapeDrive",             "TapeDrive",          logical,  "DeviceID",        "tape drive",            "tape drives"},
    {"CIM_EthernetPort",            "EthernetPort",       none,     "DeviceID",        "Ethernet port",         "Ethernet ports"},
    {"CIM_WiFiPort",                "WiFiPort",           none,     "DeviceID",        "Wi-Fi port",            "Wi-Fi ports"},
    {"CIM_IBPort",                  "IBPort",             none,     "DeviceID",        "InfiniBand port",       "InfiniBand ports"},
    {"CIM_NetworkPort",             "NetworkPort",        none,     "DeviceID",        "virtual network port",  "virtual network ports"},
    {"KELSG_IPProtocolEndpoint",    "IPProtocolEndpoint", none,     "Name",            "address",               "addresses"},
    {"KELSG_SystemSlot",            "Slot",               physical, "Tag",             "expansion slot",        "expansion slots"},
    {"KELSG_VideoController",       "DisplayController",  logical,  "DeviceID",        "graphics controller",   "graphics controllers"},
    {"CIM_DesktopMonitor",          "DesktopMonitor",     none,     "DeviceID",        "monitor",               "monitors"},
    {"CIM_VideoHead",               "VideoHead",          none,     "DeviceID",        "display output",        "display outputs"},
    {"KELSG_IDEProtocolController", "IDEController",      logical,  "DeviceID",        "IDE controller",        "IDE controllers"},
    {"KELSG_USBController",         "USBController",      logical,  "DeviceID",        "USB controller",        "USB controllers"},
    {"KELSG_USBPort",               "USBPort",            logical,  "DeviceID",        "USB port",              "USB ports"},
    {"KELSG_PCIDevice",             "PCIDevice",          logical,  "DeviceID",        "PCI function",          "PCI functions"},
    {"KELSG_PCIBridge",             "PCIBridge",          logical,  "DeviceID",        "PCI bridge",            "PCI bridges"},
    {"CIM_PCIPort",                 "PCIPort",            none,     "DeviceID",        "PCI port",              "PCI ports"},
    {"KELSG_ACPI",                  "Memory",             logical,  "DeviceID",        "memory range",          "memory ranges"},
    {"KELSG_MAS",                   "Memory",             logical,  "DeviceID",        "memory range",          "memory ranges"},
    {"CIM_Battery",                 "Battery",            none,     "DeviceID",        "battery",               "batteries"},
    {"CIM_PowerSupply",             "PowerSupply",        none,     "DeviceID",        "power supply",          "power supplies"},
    {"KELSG_srDiskGroup",           "srDiskGroup",        none,     "Tag",             "disk group",            "disk groups"},
    {"KELSG_Process",               "Process",            none,     "ProcessID",       "process",               "processes"},
    {"KELSG_DataSource",            "DataSource",         none,     "Name",            "data source",           "data sources"},
    {"KELSG_CADAT",                 "CADAT",              none,     "",                "result of a plug-in",   "results of plug-ins"},
    // Links between two resources have no key property.
    {"CIM_BasedOn",                 "BasedOn",            none,     "",                "layer of storage",      "layers of storage"},
    {"CIM_ResidesOnExtent",         "ResidesOnExtent",    none,     "",                "place of a file system", "places of file systems"},
    {"CIM_ElementInConnector",      "ElementInConnector", none,     "",                "module in a slot",      "modules in slots"},
    {"CIM_DeviceSAPImplementation", "DeviceSAPImplementation", none, "",               "address of a port",     "addresses of ports"},
};
// clang-format on

}  // namespace

std::span<const TResourceType> GetResourceTypes() {
    return rows;
}

const TResourceType* FindClassType(std::string_view className) {
    const auto* const row = std::ranges::find(rows, className, &TResourceType::className);
    return row == std::end(rows) ? nullptr : row;
}

const TResourceType* FindResourceType(std::string_view type) {
    const auto* const row = std::ranges::find(rows, type, &TResourceType::type);
    return row == std::end(rows) ? nullptr : row;
}

std::string_view GetKeyName(std::string_view className) {
    if (const TResourceClass* const listed = FindResourceClass(className)) {
        return listed->keyProperty;
    }
    const TResourceType* const row = FindClassType(className);
    return row == nullptr ? std::string_view() : row->keyProperty;
}

std::string GetTypeOfClass(std::string_view className) {
    if (const TResourceType* const row = FindClassType(className)) {
        return std::string(row->type);
    }
    return std::string(className.substr(className.find('_') + 1));
}

}  // namespace NINVENTORY
