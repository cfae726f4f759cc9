#include "machine/collect/storage/block_device.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/device_key.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/storage/emulated_medium.h"
#include "machine/collect/storage/scsi_device.h"
#include "machine/parse/placeholders.h"
#include "text/numbers.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::string_view blockFolder = "/sys/block/";

// A block device on its way to become a disk.
struct TBlockDevice {
    const ISystemFiles& files;
    std::string kernelName;
    std::string path;        // "/sys/block/sda"
    std::string devicePath;  // the same below /sys/devices; empty when there is no link
    std::string scsiHostDriver;

    std::optional<std::string> Read(std::string_view attribute) const {
        return ReadAttribute(files, path + "/" + std::string(attribute));
    }
    bool IsBelow(std::string_view part) const { return devicePath.starts_with(part); }
    /// True when the name of a folder on the way begins with `prefix`, given with the slash before it.
    bool IsBelowFolder(std::string_view prefix) const { return devicePath.find(prefix) != std::string::npos; }
};

bool HasNumberBehind(std::string_view name, std::string_view prefix) {
    return name.starts_with(prefix) && ParseNumber<std::uint32_t>(name.substr(prefix.size())).has_value();
}

// ---- SCSI, and what the kernel presents as SCSI: ATA, SAS, USB, RAID adapters, hypervisors

TScsiDevice ToScsi(const TBlockDevice& device) {
    return {device.files, device.path + "/device", device.devicePath};
}

bool IsScsiDisk(const TBlockDevice& device) {
    // Direct access, optical memory, simplified direct access; without the attribute the driver's name says.
    const auto type = device.Read("device/type");
    return !type || *type == "0" || *type == "7" || *type == "14";
}

std::optional<std::string> ReadModelAsScsi(const TBlockDevice& device) {
    return ReadScsiModel(ToScsi(device));
}

std::string ReadIdentityAsScsi(const TBlockDevice& device) {
    return ReadScsiIdentity(ToScsi(device));
}

std::string FindTransportAsScsi(const TBlockDevice& device) {
    return FindScsiTransport(ToScsi(device));
}

// ---- volumes of RAID adapters

std::string RaidClassFolder(const TBlockDevice& device) {
    return "/sys/class/raid_devices/" + FindScsiAddress(ToScsi(device));
}

ERaidFamily FindFamilyOfVolume(const TBlockDevice& device) {
    // Smart Array drivers say it of each unit; "N/A" stands for a disk passed through.
    if (const auto level = device.Read("device/raid_level")) {
        return *level == "N/A" ? ERaidFamily::none : FindRaidFamily(device.scsiHostDriver);
    }
    const std::string address = FindScsiAddress(ToScsi(device));
    if (!address.empty() && device.files.Exists(RaidClassFolder(device))) {
        return FindRaidFamily(device.scsiHostDriver);
    }
    return FindRaidVolume(device.scsiHostDriver, address).value_or(ERaidFamily::none);
}

// The state of a unit says whether the adapter answers. How the volume fares only some drivers tell.
std::optional<TOperationalStatus> FindVolumeStatus(const TBlockDevice& device) {
    if (const auto state = ReadAttribute(device.files, RaidClassFolder(device) + "/state")) {
        return FindRaidVolumeStatus(*state);
    }
    const auto unit = FindDiskStatus(device.Read("device/state").value_or(""));
    return unit && unit->front() != statusOk ? unit : std::nullopt;
}

TRedundancy FindVolumeRedundancy(const TBlockDevice& device) {
    const std::string folder = RaidClassFolder(device);
    const std::string level = ReadAttribute(device.files, folder + "/level").value_or("");
    const bool isWhole = ReadAttribute(device.files, folder + "/state") == "active";
    return FindArrayRedundancy(
        {level, /*disks=*/std::nullopt, isWhole ? std::optional<std::uint32_t>(0) : std::nullopt});
}

void SetFromRaidAdapter(const TBlockDevice& device, TDisk& disk) {
    disk.raidFamily = FindFamilyOfVolume(device);
    if (disk.raidFamily != ERaidFamily::none) {
        disk.backing = EDiskBacking::raidVolume;
        disk.operationalStatus = FindVolumeStatus(device);
        disk.redundancy = FindVolumeRedundancy(device);
    }
}

// ---- NVMe

std::optional<std::string> ReadNvmeModel(const TBlockDevice& device) {
    return device.Read("device/model");
}

std::string ReadNvmeIdentity(const TBlockDevice& device) {
    const auto wwid = device.Read("wwid");
    if (wwid && (wwid->starts_with("eui.") || wwid->starts_with("uuid.")) &&
        !IsPlaceholder(wwid->substr(wwid->find('.') + 1))) {
        return *wwid;
    }
    const auto serial = WithoutPlaceholder(device.Read("device/serial"));
    // All name spaces of a controller have its serial number.
    const std::string nameSpace = device.kernelName.substr(device.kernelName.rfind('n'));
    return serial ? *serial + "-" + nameSpace : "";
}

// A fabric may end on another machine, and also on this one ("loop"): there is no drive in either case.
bool IsFabricTransport(std::string_view transport) {
    constexpr std::string_view fabrics[] = {"tcp", "rdma", "fc", "loop"};
    return std::find(std::begin(fabrics), std::end(fabrics), transport) != std::end(fabrics);
}

// The disk of a subsystem has no controller of its own but links to those that lead to it.
bool IsRemoteNvme(const TBlockDevice& device) {
    if (device.IsBelowFolder("/nvme-fabrics/")) {
        return true;
    }
    if (const auto transport = device.Read("device/transport")) {
        return IsFabricTransport(*transport);
    }
    const auto names = device.files.List(device.path + "/device").value;
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        return HasNumberBehind(name, "nvme") &&
               IsFabricTransport(device.Read("device/" + name + "/transport").value_or(""));
    });
}

// ---- MMC and SD

std::optional<std::string> ReadMmcModel(const TBlockDevice& device) {
    return device.Read("device/name");
}

std::string ReadMmcIdentity(const TBlockDevice& device) {
    // The card's identification register holds its maker, product and serial number.
    return WithoutPlaceholder(device.Read("device/cid")).value_or("");
}

// ---- paravirtual disks

std::optional<std::string> ReadNoModel(const TBlockDevice&) {
    return std::nullopt;
}

std::string ReadVirtioIdentity(const TBlockDevice& device) {
    return WithoutPlaceholder(device.Read("serial")).value_or("");
}

std::string ReadNoIdentity(const TBlockDevice&) {
    return {};
}

// ---- kinds of disks

bool IsAlwaysDisk(const TBlockDevice&) {
    return true;
}

bool IsNeverRemote(const TBlockDevice&) {
    return false;
}

// The initiator opens a session with the machine that has the disk.
bool IsRemoteScsi(const TBlockDevice& device) {
    return device.IsBelowFolder("/session");
}

// "mmcblk0", not its hardware partitions "mmcblk0boot0" and "mmcblk0rpmb".
bool IsMmcDisk(const TBlockDevice& device) {
    return HasNumberBehind(device.kernelName, "mmcblk");
}

std::string ScsiState(const TBlockDevice& device) {
    return device.Read("device/state").value_or("");
}

struct TDiskKind {
    std::string_view subsystem;   // what ".../device/subsystem" leads to
    std::string_view namePrefix;  // decides where a tree has no such link
    bool (*isDisk)(const TBlockDevice& device);
    std::string (*findTransport)(const TBlockDevice& device);
    std::optional<std::string> (*readModel)(const TBlockDevice& device);
    std::string (*readIdentity)(const TBlockDevice& device);
    std::string (*readState)(const TBlockDevice& device);
    bool (*isRemote)(const TBlockDevice& device);
    EDiskBacking backing;  // unless a rule below says otherwise
};

std::string NoState(const TBlockDevice&) {
    return {};
}

// clang-format off
constexpr TDiskKind diskKinds[] = {
    {"scsi", "sd", IsScsiDisk, FindTransportAsScsi, ReadModelAsScsi, ReadIdentityAsScsi, ScsiState,
     IsRemoteScsi, EDiskBacking::physical},
    {"nvme", "nvme", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("NVMe"); }, ReadNvmeModel,
     ReadNvmeIdentity, ScsiState, IsRemoteNvme, EDiskBacking::physical},
    {"nvme-subsystem", "nvme", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("NVMe"); },
     ReadNvmeModel, ReadNvmeIdentity, NoState, IsRemoteNvme, EDiskBacking::physical},
    {"mmc", "mmcblk", IsMmcDisk, [](const TBlockDevice&) { return std::string("MMC"); }, ReadMmcModel,
     ReadMmcIdentity, NoState, IsNeverRemote, EDiskBacking::physical},
    {"virtio", "vd", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("virtio"); }, ReadNoModel,
     ReadVirtioIdentity, NoState, IsNeverRemote, EDiskBacking::simulated},
    {"xen", "xvd", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("Xen"); }, ReadNoModel,
     ReadNoIdentity, NoState, IsNeverRemote, EDiskBacking::simulated},
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

// Adapters and models that only hypervisors and emulators have.
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

// A bus that only hypervisors have; a captured tree may hold nothing else of the adapter.
constexpr std::string_view paravirtualBus = "/virtio";

bool IsSimulated(const TBlockDevice& device, const std::optional<std::string>& model) {
    const auto isAdapter = [&](std::string_view row) { return row == device.scsiHostDriver; };
    const auto isModel = [&](std::string_view row) { return model && model->starts_with(row); };
    return std::any_of(std::begin(simulatedAdapters), std::end(simulatedAdapters), isAdapter) ||
           std::any_of(std::begin(simulatedModels), std::end(simulatedModels), isModel) ||
           device.IsBelowFolder(paravirtualBus) || IsEmulatedMedium(ToScsi(device), model);
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
    // The kernel counts 512-byte sectors whatever the block size.
    const auto sectors = ReadNumber<std::uint64_t>(device.files, device.path + "/size");
    if (sectors && *sectors != 0) {
        disk.sizeBytes = *sectors * 512;
        disk.blockSizeBytes =
            ReadNumber<std::uint64_t>(device.files, device.path + "/queue/logical_block_size");
    }
}

struct TFoundDisk {
    TDisk disk;
    std::string identity;
};

std::optional<TFoundDisk> ReadDisk(const ISystemFiles& files, const std::string& kernelName) {
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
    TFoundDisk found;
    TDisk& disk = found.disk;
    disk.kernelName = kernelName;
    disk.position = ReadDevicePosition(files, device.devicePath);
    if (disk.position.empty()) {
        disk.position = kernelName;
    }
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
    disk.operationalStatus = FindDiskStatus(kind->readState(device));
    if (disk.backing == EDiskBacking::physical) {
        disk.redundancy = diskRedundancy;
        SetFromRaidAdapter(device, disk);
    }
    found.identity = kind->readIdentity(device);
    return found;
}

std::vector<TDisk> ReadDisks(TCollection& collection) {
    std::vector<TDisk> disks;
    std::vector<TKeySource> keySources;
    for (const std::string& name : collection.GetFiles().List("/sys/block").value) {
        if (auto found = ReadDisk(collection.GetFiles(), name)) {
            keySources.push_back({std::move(found->identity), found->disk.position});
            disks.push_back(std::move(found->disk));
        }
    }
    auto keys = collection.MakeKeys(keySources, "disk");
    for (std::size_t i = 0; i < disks.size(); ++i) {
        disks[i].key = std::move(keys[i]);
    }
    return disks;
}

}  // namespace

const std::vector<TDisk>& GetDisks(TCollection& collection) {
    return collection.ReadOnce(ReadDisks);
}

}  // namespace NVORHOST
