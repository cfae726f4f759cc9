// The table of the hardware document's lists.
#include "writer/resource_lists.h"

#include "host/plugin_callbacks.h"

using NKELVOR20::logicalDevice;
using NKELVOR20::physicalElement;

namespace {

// Row order is document order. DVD drives are listed as diskette drives: readers of the documents expect it.
// clang-format off
constexpr TListRow listRows[] = {
    {&physicalElement, {"Slot"},              {"KELSG_SystemSlot"},            false},
    {&physicalElement, {"PhysicalMemory"},    {"KELSG_SPDData"},               false},
    {&physicalElement, {"Card"},              {"KELSG_Card"},                  false},
    {&logicalDevice,   {"Processor"},         {"KELSG_Processor"},             true},
    {&logicalDevice,   {"DiskDrive"},         {"KELSG_DiskDrive"},             false},
    {&logicalDevice,   {"DiskDrive"},         {"CIM_DiskDrive"},               true},
    {&logicalDevice,   {"DisketteDrive"},     {"KELSG_DisketteDrive"},         false},
    {&logicalDevice,   {"TapeDrive"},         {"KELSG_TapeDrive"},             false},
    {&logicalDevice,   {"OpticalDrive"},      {"KELSG_CDROMDrive"},            false},
    {&logicalDevice,   {"DisketteDrive"},     {"KELSG_DVDDrive"},              false},
    {&logicalDevice,   {"DiskPartition"},     {"CIM_DiskPartition"},           true},
    {&logicalDevice,   {"Memory"},            {"KELSG_ACPI"},                  true},
    {&logicalDevice,   {"Memory"},            {"KELSG_MAS"},                   false},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_LSILogicalDisk"},        false},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_LSIIDELogicalDisk"},     false},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_srLogicalDisk"},         false},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_LogicalDisk"},           false},
    {&logicalDevice,   {"IDEController"},     {"KELSG_IDEProtocolController"}, true},
    {&logicalDevice,   {"USBPort"},           {"KELSG_USBPort"},               false},
    {&logicalDevice,   {"DisplayController"}, {"KELSG_VideoController"},       false},
    {&logicalDevice,   {"PCIDevice"},         {"KELSG_PCIDevice"},             false},
    {&logicalDevice,   {"PCIBridge"},         {"KELSG_PCIBridge"},             false},
    {&logicalDevice,   {"USBController"},     {"KELSG_USBController"},         false},
};
// clang-format on

}  // namespace

std::span<const TListRow> GetResourceLists() noexcept {
    return listRows;
}
