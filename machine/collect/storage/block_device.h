// The disks among the kernel's block devices: kind, position, identity and sizes of each.
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

/// The kind of device that provides a disk.
enum class EDiskBacking {
    physical,    ///< one physical device
    simulated,   ///< provided by a hypervisor, an emulator or a management controller
    remote,      ///< on another machine, accessed over a network
    raidVolume,  ///< built by an adapter from the disks attached to it
};

struct TDisk {
    std::string kernelName;  ///< "sda"
    std::string key;         ///< unique among the machine's disks
    std::string position;    ///< as in device_position.h; the kernel's name if the position is unknown
    std::string transport;   ///< "ATA", "SCSI", "iSCSI", "SAS", "USB", "NVMe", "MMC", "virtio", "Xen"
    EDiskBacking backing = EDiskBacking::physical;
    ERaidFamily raidFamily = ERaidFamily::none;  ///< `none` unless the disk is a RAID volume
    /// Vendor and model; absent if the disk reports neither.
    std::optional<std::string> model;
    std::optional<std::uint64_t> sizeBytes;       ///< absent for a drive without a medium
    std::optional<std::uint64_t> blockSizeBytes;  ///< logical block; absent with the size
    std::optional<bool> isRemovable;
    /// True for platters; the kernel's default for a drive that does not report it.
    std::optional<bool> isRotational;
    /// CIM operational status; absent if the kernel has no state for the disk.
    std::optional<std::vector<std::uint16_t>> operationalStatus;
    /// For a RAID volume as far as its driver reports it; absent for simulated and remote disks.
    TRedundancy redundancy;
};

/// True for volumes of RAID adapters that have a class of logical disks.
inline bool IsLogicalDisk(const TDisk& disk) {
    return disk.raidFamily != ERaidFamily::none && disk.raidFamily != ERaidFamily::other;
}

/// Returns every disk in the order of the kernel's names, drives for removable disks included. Excluded are
/// loop, RAM and zram devices, md and dm devices, optical and floppy drives, hardware partitions of MMC, and
/// hidden paths of multipath NVMe. The disks are read at the first call.
const std::vector<TDisk>& GetDisks(TCollection& collection);

/// The paths that GetDisks may access.
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
