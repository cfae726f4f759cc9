#include "writer/resource_lists.h"

#include "host/plugin_callbacks.h"

using NKELVOR20::logicalDevice;
using NKELVOR20::physicalElement;

namespace {

// Row order is document order. DVD drives are listed as diskette drives because readers expect it.
// clang-format off
constexpr TListRow listRows[] = {
    {&physicalElement, {"Slot"},              {"KELSG_SystemSlot"}},
    {&physicalElement, {"PhysicalMemory"},    {"KELSG_SPDData"}},
    {&physicalElement, {"Card"},              {"KELSG_Card"}},
    {&logicalDevice,   {"Processor"},         {"KELSG_Processor"}},
    {&logicalDevice,   {"DiskDrive"},         {"KELSG_DiskDrive"}},
    {&logicalDevice,   {"DiskDrive"},         {"CIM_DiskDrive"}},
    {&logicalDevice,   {"DisketteDrive"},     {"KELSG_DisketteDrive"}},
    {&logicalDevice,   {"TapeDrive"},         {"KELSG_TapeDrive"}},
    {&logicalDevice,   {"OpticalDrive"},      {"KELSG_CDROMDrive"}},
    {&logicalDevice,   {"DisketteDrive"},     {"KELSG_DVDDrive"}},
    {&logicalDevice,   {"DiskPartition"},     {"CIM_DiskPartition"}},
    {&logicalDevice,   {"Memory"},            {"KELSG_ACPI"}},
    {&logicalDevice,   {"Memory"},            {"KELSG_MAS"}},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_LSILogicalDisk"}},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_LSIIDELogicalDisk"}},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_srLogicalDisk"}},
    {&logicalDevice,   {"LogicalVolume"},     {"KELSG_LogicalDisk"}},
    {&logicalDevice,   {"IDEController"},     {"KELSG_IDEProtocolController"}},
    {&logicalDevice,   {"USBPort"},           {"KELSG_USBPort"}},
    {&logicalDevice,   {"DisplayController"}, {"KELSG_VideoController"}},
    {&logicalDevice,   {"PCIDevice"},         {"KELSG_PCIDevice"}},
    {&logicalDevice,   {"PCIBridge"},         {"KELSG_PCIBridge"}},
    {&logicalDevice,   {"USBController"},     {"KELSG_USBController"}},
};
// clang-format on

}  // namespace

std::span<const TListRow> GetResourceLists() noexcept {
    return listRows;
}
