#include "machine/collect/storage/block_device.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/storage/block_size.h"
#include "machine/collect/storage/emulated_medium.h"
#include "machine/collect/storage/scsi_device.h"
#include "machine/parse/placeholders.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::string_view blockFolder = "/sys/block/";

// A block device that may be a disk.
struct TBlockDevice {
    const ISystemFiles& files;
    std::string kernelName;
    std::string path;                       // "/sys/block/sda"
    std::optional<std::string> devicePath;  // path below /sys/devices; absent if the tree has no links
    std::optional<std::string> scsiHostDriver;

    std::optional<std::string> Read(std::string_view attribute) const {
        return ReadAttribute(files, path + "/" + std::string(attribute));
    }
    bool IsBelow(std::string_view part) const { return devicePath && devicePath->starts_with(part); }
    // True if the name of a folder on the path begins with `prefix`, which starts with a slash.
    bool IsBelowFolder(std::string_view prefix) const {
        return devicePath && devicePath->find(prefix) != std::string::npos;
    }
};

TScsiDevice ToScsi(const TBlockDevice& device) {
    return {device.files, device.path + "/device", device.devicePath};
}

bool IsScsiDisk(const TBlockDevice& device) {
    // Direct access, optical memory, simplified direct access. Without the attribute, the driver sd implies a
    // disk.
    const auto type = device.Read("device/type");
    return !type || *type == "0" || *type == "7" || *type == "14";
}

std::optional<std::string> ReadModelAsScsi(const TBlockDevice& device) {
    return ReadScsiModel(ToScsi(device));
}

std::optional<std::string> ReadIdentityAsScsi(const TBlockDevice& device) {
    return ReadScsiIdentity(ToScsi(device));
}

std::string FindTransportAsScsi(const TBlockDevice& device) {
    return FindScsiTransport(ToScsi(device));
}

// Returns the folder of the volume in the kernel's RAID class; nullopt for a disk without a SCSI address.
std::optional<std::string> FindRaidClassFolder(const TBlockDevice& device) {
    const auto address = FindScsiAddress(ToScsi(device));
    return address ? std::optional("/sys/class/raid_devices/" + *address) : std::nullopt;
}

std::optional<std::string> ReadRaidAttribute(const TBlockDevice& device, std::string_view attribute) {
    const auto folder = FindRaidClassFolder(device);
    return folder ? ReadAttribute(device.files, *folder + "/" + std::string(attribute)) : std::nullopt;
}

ERaidFamily FindFamilyOfVolume(const TBlockDevice& device) {
    const std::string driver = device.scsiHostDriver.value_or("");
    // Smart Array drivers report the level of each unit; "N/A" is a disk that is passed through.
    if (const auto level = device.Read("device/raid_level")) {
        return *level == "N/A" ? ERaidFamily::none : FindRaidFamily(driver);
    }
    const auto folder = FindRaidClassFolder(device);
    if (folder && device.files.Exists(*folder)) {
        return FindRaidFamily(driver);
    }
    const std::string address = FindScsiAddress(ToScsi(device)).value_or("");
    return FindRaidVolume(driver, address).value_or(ERaidFamily::none);
}

// The RAID class has the state of the volume, for some drivers only. The state of the SCSI unit only shows
// whether the adapter responds, so "running" is not a status of the volume.
std::optional<TOperationalStatus> FindVolumeStatus(const TBlockDevice& device) {
    if (const auto state = ReadRaidAttribute(device, "state")) {
        return FindRaidVolumeStatus(*state);
    }
    const auto unit = FindDiskStatus(device.Read("device/state").value_or(""));
    return unit && unit->front() != statusOk ? unit : std::nullopt;
}

TRedundancy FindVolumeRedundancy(const TBlockDevice& device) {
    const std::string level = ReadRaidAttribute(device, "level").value_or("");
    const bool isComplete = ReadRaidAttribute(device, "state") == "active";
    return FindArrayRedundancy(
        {level, /*disks=*/std::nullopt, isComplete ? std::optional<std::uint32_t>(0) : std::nullopt});
}

void SetFromRaidAdapter(const TBlockDevice& device, TDisk& disk) {
    disk.raidFamily = FindFamilyOfVolume(device);
    if (disk.raidFamily != ERaidFamily::none) {
        disk.backing = EDiskBacking::raidVolume;
        disk.operationalStatus = FindVolumeStatus(device);
        disk.redundancy = FindVolumeRedundancy(device);
    }
}

std::optional<std::string> ReadNvmeModel(const TBlockDevice& device) {
    return device.Read("device/model");
}

std::optional<std::string> ReadNvmeIdentity(const TBlockDevice& device) {
    auto wwid = device.Read("wwid");
    if (wwid && (wwid->starts_with("eui.") || wwid->starts_with("uuid.")) &&
        !IsPlaceholder(wwid->substr(wwid->find('.') + 1))) {
        return wwid;
    }
    const auto serial = WithoutPlaceholder(device.Read("device/serial"));
    // The name spaces of a controller share its serial number.
    const std::string nameSpace = device.kernelName.substr(device.kernelName.rfind('n'));
    return serial ? std::optional(*serial + "-" + nameSpace) : std::nullopt;
}

// A fabric leads to another machine or, for "loop", back to this one. Neither is a drive of this machine.
bool IsFabricTransport(std::string_view transport) {
    constexpr std::string_view fabrics[] = {"tcp", "rdma", "fc", "loop"};
    return std::ranges::find(fabrics, transport) != std::end(fabrics);
}

// The disk of an NVMe subsystem has no controller of its own; its folder links to the controllers of its
// paths.
bool IsRemoteNvme(const TBlockDevice& device) {
    if (device.IsBelowFolder("/nvme-fabrics/")) {
        return true;
    }
    if (const auto transport = device.Read("device/transport")) {
        return IsFabricTransport(*transport);
    }
    const auto names = device.files.List(device.path + "/device").value;
    return std::ranges::any_of(names, [&](const std::string& name) {
        return FindNumberAfter(name, "nvme") &&
               IsFabricTransport(device.Read("device/" + name + "/transport").value_or(""));
    });
}

std::optional<std::string> ReadMmcModel(const TBlockDevice& device) {
    return device.Read("device/name");
}

std::optional<std::string> ReadMmcIdentity(const TBlockDevice& device) {
    // The identification register of the card holds vendor, product and serial number.
    return WithoutPlaceholder(device.Read("device/cid"));
}

std::optional<std::string> ReadVirtioIdentity(const TBlockDevice& device) {
    return WithoutPlaceholder(device.Read("serial"));
}

// For kinds of disks without a model, an identity or a state.
std::optional<std::string> ReadNothing(const TBlockDevice&) {
    return std::nullopt;
}

bool IsAlwaysDisk(const TBlockDevice&) {
    return true;
}

bool IsNeverRemote(const TBlockDevice&) {
    return false;
}

// iSCSI: the path of the disk contains the initiator's session with the other machine.
bool IsRemoteScsi(const TBlockDevice& device) {
    return device.IsBelowFolder("/session");
}

// True for "mmcblk0", but not for its hardware partitions "mmcblk0boot0" and "mmcblk0rpmb".
bool IsMmcDisk(const TBlockDevice& device) {
    return FindNumberAfter(device.kernelName, "mmcblk").has_value();
}

std::optional<std::string> ReadState(const TBlockDevice& device) {
    return device.Read("device/state");
}

struct TDiskKind {
    std::string_view subsystem;   // last name in the target of "device/subsystem"
    std::string_view namePrefix;  // decides if a tree lacks that link
    bool (*isDisk)(const TBlockDevice& device);
    std::string (*findTransport)(const TBlockDevice& device);
    std::optional<std::string> (*readModel)(const TBlockDevice& device);
    std::optional<std::string> (*readIdentity)(const TBlockDevice& device);
    std::optional<std::string> (*readState)(const TBlockDevice& device);
    bool (*isRemote)(const TBlockDevice& device);
    EDiskBacking backing;  // default; see FindBacking
};

// clang-format off
constexpr TDiskKind diskKinds[] = {
    {"scsi", "sd", IsScsiDisk, FindTransportAsScsi, ReadModelAsScsi, ReadIdentityAsScsi, ReadState,
     IsRemoteScsi, EDiskBacking::physical},
    {"nvme", "nvme", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("NVMe"); }, ReadNvmeModel,
     ReadNvmeIdentity, ReadState, IsRemoteNvme, EDiskBacking::physical},
    {"nvme-subsystem", "nvme", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("NVMe"); },
     ReadNvmeModel, ReadNvmeIdentity, ReadNothing, IsRemoteNvme, EDiskBacking::physical},
    {"mmc", "mmcblk", IsMmcDisk, [](const TBlockDevice&) { return std::string("MMC"); }, ReadMmcModel,
     ReadMmcIdentity, ReadNothing, IsNeverRemote, EDiskBacking::physical},
    {"virtio", "vd", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("virtio"); }, ReadNothing,
     ReadVirtioIdentity, ReadNothing, IsNeverRemote, EDiskBacking::simulated},
    {"xen", "xvd", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("Xen"); }, ReadNothing,
     ReadNothing, ReadNothing, IsNeverRemote, EDiskBacking::simulated},
};
// clang-format on

const TDiskKind* FindKind(const TBlockDevice& device) {
    const auto subsystem = ReadLinkedName(device.files, device.path + "/device/subsystem");
    for (const TDiskKind& kind : diskKinds) {
        if (subsystem ? kind.subsystem == *subsystem : device.kernelName.starts_with(kind.namePrefix)) {
            return &kind;
        }
    }
    return nullptr;
}

// Adapters and models that are specific to hypervisors and emulators.
constexpr std::string_view simulatedAdapters[] = {
    "Virtio SCSI HBA", "virtio_scsi",   "vmw_pvscsi", "storvsc_host_t",
    "storvsc",         "xen-scsifront", "scsi_debug",
};

constexpr std::string_view simulatedModels[] = {
    "QEMU",
    "VBOX",
    "VMware",
    "ORCL-VBOX",
    "Msft Virtual",
    "MSFT NVMe",
    "Virtual HD",
    "Virtual Disk",
    "Amazon Elastic Block Store",
    "Amazon EC2",
    "Google PersistentDisk",
    "Google EphemeralDisk",
    "nvme_card",
    "BHYVE",
    "Parallels",
    "Linux scsi_debug",
    "Nutanix VDISK",
    "XENSRC",
};

// A bus that is specific to hypervisors; a captured tree may have no other trace of the adapter.
constexpr std::string_view paravirtualBus = "/virtio";

bool IsSimulated(const TBlockDevice& device, const std::optional<std::string>& model) {
    const auto isAdapter = [&](std::string_view row) { return row == device.scsiHostDriver; };
    const auto isModel = [&](std::string_view row) { return model && model->starts_with(row); };
    return std::ranges::any_of(simulatedAdapters, isAdapter) ||
           std::ranges::any_of(simulatedModels, isModel) || device.IsBelowFolder(paravirtualBus) ||
           IsEmulatedMedium(ToScsi(device), model);
}

EDiskBacking FindBacking(const TDiskKind& kind, const TBlockDevice& device,
                         const std::optional<std::string>& model) {
    if (IsSimulated(device, model)) {
        return EDiskBacking::simulated;
    }
    return kind.isRemote(device) ? EDiskBacking::remote : kind.backing;
}

bool IsMadeByKernel(const TBlockDevice& device) {
    return device.IsBelow("/sys/devices/virtual/block/");
}

void ReadSizes(const TBlockDevice& device, TDisk& disk) {
    const auto sectors = ReadSectors(device.files, device.path);
    if (sectors && *sectors != 0) {
        disk.sizeBytes = SectorsToBytes(*sectors);
        disk.blockSizeBytes = ReadBlockSize(device.files, device.path);
    }
}

std::optional<TKeyedRecord<TDisk>> ReadDisk(const ISystemFiles& files, const std::string& kernelName) {
    const std::string path = std::string(blockFolder) + kernelName;
    TBlockDevice device{files, kernelName, path, FindEntryDevice(files, path), {}};
    if (IsMadeByKernel(device)) {
        return std::nullopt;
    }
    const TDiskKind* kind = FindKind(device);
    if (kind == nullptr || !kind->isDisk(device) || device.Read("hidden") == "1") {
        return std::nullopt;
    }
    device.scsiHostDriver = ReadScsiHostDriver(ToScsi(device));
    TDisk disk;
    disk.kernelName = kernelName;
    const auto position = device.devicePath ? ReadDevicePosition(files, *device.devicePath) : std::nullopt;
    disk.position = position.value_or(kernelName);
    disk.transport = kind->findTransport(device);
    disk.model = kind->readModel(device);
    disk.backing = FindBacking(*kind, device, disk.model);
    ReadSizes(device, disk);
    if (const auto removable = device.Read("removable")) {
        disk.isRemovable = *removable == "1";
    }
    if (const auto rotational = device.Read("queue/rotational")) {
        disk.isRotational = *rotational == "1";
    }
    disk.operationalStatus = FindDiskStatus(kind->readState(device).value_or(""));
    if (disk.backing == EDiskBacking::physical) {
        disk.redundancy = diskRedundancy;
        SetFromRaidAdapter(device, disk);
    }
    TKeySource keySource{kind->readIdentity(device), disk.position};
    return TKeyedRecord<TDisk>{std::move(disk), std::move(keySource)};
}

std::vector<TDisk> ReadDisks(TCollection& collection) {
    std::vector<TKeyedRecord<TDisk>> disks;
    for (const std::string& name : collection.GetFiles().List("/sys/block").value) {
        if (auto disk = ReadDisk(collection.GetFiles(), name)) {
            disks.push_back(std::move(*disk));
        }
    }
    return AssignKeys(collection, std::move(disks), &TDisk::key, "disk");
}

}  // namespace

const std::vector<TDisk>& GetDisks(TCollection& collection) {
    return collection.ReadOnce(ReadDisks);
}

}  // namespace NVORHOST
