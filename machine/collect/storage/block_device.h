// The disks among the kernel's block devices: what each is, where it sits and what it says of itself.
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/collect/storage/raid_adapter.h"
#include "machine/collect/storage/redundancy.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

class TCollection;

/// What stands behind a disk.
enum class EDiskBacking {
    physical,    ///< one device of its own
    simulated,   ///< a hypervisor's, an emulator's or a management controller's
    remote,      ///< on another machine, reached over a network
    raidVolume,  ///< made by an adapter from disks behind it
};

struct TDisk {
    std::string kernelName;  ///< "sda"
    std::string key;         ///< unique among the machine's disks
    std::string position;    ///< as of device_position.h; the kernel's name when nothing else tells
    std::string transport;   ///< "ATA", "SCSI", "iSCSI", "SAS", "USB", "NVMe", "MMC", "virtio", "Xen"
    EDiskBacking backing = EDiskBacking::physical;
    ERaidFamily raidFamily = ERaidFamily::none;  ///< of a RAID volume
    /// Vendor and model as people know the disk; absent when it does not say.
    std::optional<std::string> model;
    std::optional<std::uint64_t> sizeBytes;       ///< absent for a drive without medium
    std::optional<std::uint64_t> blockSizeBytes;  ///< logical block; absent with the size
    std::optional<bool> isRemovable;
    std::optional<bool> isRotational;  ///< true for platters; the kernel's default where a drive does not say
    /// CIM operational status; absent where the kernel keeps no state.
    std::optional<std::vector<std::uint16_t>> operationalStatus;
    /// Of a RAID volume as far as its driver tells; unknown for what a hypervisor presents.
    TRedundancy redundancy;
};

/// True for volumes of RAID adapters whose makers have a class of logical disks.
inline bool IsLogicalDisk(const TDisk& disk) {
    return disk.raidFamily != ERaidFamily::none && disk.raidFamily != ERaidFamily::other;
}

/// Every disk in the order of the kernel's names, drives for removable disks included. Not among them: loop,
/// RAM and zram devices, md and dm devices, optical drives, floppy drives, hardware partitions of MMC,
/// hidden paths of multipath NVMe.
const std::vector<TDisk>& GetDisks(TCollection& collection);

/// What that reads.
inline constexpr std::array<TSourcePattern, 17> diskSources{
    "/sys/block",
    "/sys/block/*",
    "/sys/block/*/*",
    "/sys/block/*/device/*",
    "/sys/block/*/device/nvme*/transport",
    "/sys/block/*/queue/logical_block_size",
    "/sys/block/*/queue/rotational",
    "/sys/class/raid_devices/**",
    "/sys/class/scsi_host/*/proc_name",
    "/sys/devices/**/*:*:*.*",
    "/sys/devices/**/driver",
    "/sys/devices/**/ata_port/*/port_no",
    "/sys/devices/**/sas_device/*/sas_address",
    "/sys/devices/**/usb*/version",
    "/sys/devices/**/idVendor",
    "/sys/devices/**/serial",
    "/sys/devices/**/usb*/serial",
};

}  // namespace NVORHOST
