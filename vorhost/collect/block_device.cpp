#include "vorhost/collect/block_device.h"

#include "vorhost/collect/attribute.h"
#include "vorhost/collect/collection.h"
#include "vorhost/collect/device_key.h"
#include "vorhost/collect/device_position.h"
#include "vorhost/collect/operational_status.h"
#include "vorhost/parse/placeholders.h"
#include "vorhost/parse/scsi_vpd.h"

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
    bool IsBelow(std::string_view part) const { return devicePath.find(part) != std::string::npos; }
};

std::string Join(const std::optional<std::string>& first, const std::optional<std::string>& second) {
    std::string joined = first.value_or("");
    if (second) {
        joined += (joined.empty() ? "" : " ") + *second;
    }
    return joined;
}

std::optional<std::string> NonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

// The folder of the device's path whose name satisfies `matches`, counted from the end; empty when none does.
template <typename TMatches>
std::string_view FindFolder(std::string_view path, TMatches matches) {
    while (!path.empty()) {
        const auto slash = path.rfind('/');
        if (matches(path.substr(slash + 1))) {
            return path;
        }
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
    return {};
}

bool HasNumberBehind(std::string_view name, std::string_view prefix) {
    return name.starts_with(prefix) && ParseNumber<std::uint32_t>(name.substr(prefix.size())).has_value();
}

// "1-2.3", not an interface "1-2.3:1.0".
bool IsUsbDeviceName(std::string_view name) {
    const auto dash = name.find('-');
    return dash != std::string_view::npos && ParseNumber<std::uint32_t>(name.substr(0, dash)) &&
           name.find(':') == std::string_view::npos;
}

// ---- SCSI, and what the kernel presents as SCSI: ATA, SAS, USB, RAID adapters, hypervisors

std::string ReadScsiHostDriver(const ISystemFiles& files, std::string_view devicePath) {
    const auto host = FindFolder(devicePath, [](auto name) { return HasNumberBehind(name, "host"); });
    if (host.empty()) {
        return {};
    }
    const std::string name(host.substr(host.rfind('/') + 1));
    return ReadAttribute(files, "/sys/class/scsi_host/" + name + "/proc_name").value_or("");
}

bool IsScsiDisk(const TBlockDevice& device) {
    // Direct access, optical memory, simplified direct access; without the attribute the driver's name says.
    const auto type = device.Read("device/type");
    return !type || *type == "0" || *type == "7" || *type == "14";
}

std::optional<std::string> ReadScsiModel(const TBlockDevice& device) {
    const auto page = device.files.ReadBytes(device.path + "/device/vpd_pg83", std::size_t{1} << 16);
    if (auto model = ParseVpdAtaModel(page.value)) {
        return model;
    }
    const auto vendor = device.Read("device/vendor");
    const auto model = device.Read("device/model");
    const bool saysVendorTwice = vendor && model && model->starts_with(*vendor + " ");
    // "ATA" stands for the vendor of every ATA disk.
    return NonEmpty(Join(vendor == "ATA" || saysVendorTwice ? std::nullopt : vendor, model));
}

// The logical unit, for devices that have several of them behind one serial number.
std::string UnitSuffix(const TBlockDevice& device) {
    const auto folder = FindFolder(device.devicePath, [](std::string_view name) {
        return std::count(name.begin(), name.end(), ':') == 3;
    });
    const std::string unit(folder.substr(folder.rfind(':') + 1));
    return folder.empty() || unit == "0" ? "" : "-" + unit;
}

std::string ReadUsbSerial(const TBlockDevice& device) {
    const auto usbDevice = FindFolder(device.devicePath, IsUsbDeviceName);
    if (usbDevice.empty()) {
        return {};
    }
    auto serial = ReadAttribute(device.files, std::string(usbDevice) + "/serial");
    serial = WithoutPlaceholder(std::move(serial));
    return serial ? *serial + UnitSuffix(device) : "";
}

std::string ReadScsiIdentity(const TBlockDevice& device) {
    const auto wwid = device.Read("device/wwid");
    // "t10." is the vendor's and model's names with the serial number, which follows below by itself.
    if (wwid && (wwid->starts_with("naa.") || wwid->starts_with("eui.")) && !IsPlaceholder(wwid->substr(4))) {
        return *wwid;
    }
    const auto page = device.files.ReadBytes(device.path + "/device/vpd_pg80", std::size_t{1} << 16);
    const auto serial = WithoutPlaceholder(ParseVpdSerial(page.value));
    return serial ? *serial : ReadUsbSerial(device);
}

std::string FindScsiTransport(const TBlockDevice& device) {
    struct TRow {
        std::string_view part;
        std::string_view transport;
    };
    constexpr TRow rows[] = {
        {"/usb", "USB"},
        {"/ata", "ATA"},
        {"/end_device-", "SAS"},
    };
    for (const TRow& row : rows) {
        if (device.IsBelow(row.part)) {
            return std::string(row.transport);
        }
    }
    // Kernels before 2.6.39 had no folder for the link.
    return device.Read("device/vendor") == "ATA" ? "ATA" : "SCSI";
}

// Adapters whose volumes look like disks. On the channels from `firstVolumeChannel` they are volumes; disks
// that the adapter passes through are on the lower ones.
struct TRaidAdapter {
    std::string_view driver;
    std::uint32_t firstVolumeChannel;
};

constexpr TRaidAdapter raidAdapters[] = {
    {"3w-9xxx", 0}, {"3w-sas", 0},  {"3w-xxxx", 0},         {"aacraid", 0},  {"arcmsr", 0},
    {"dpt_i2o", 0}, {"ips", 0},     {"megaraid_legacy", 0}, {"megaraid", 0}, {"megaraid_sas", 2},
    {"mpt2sas", 1}, {"mpt3sas", 1}, {"mptsas", 1},          {"mpi3mr", 1},   {"stex", 0},
};

bool IsRaidVolume(const TBlockDevice& device) {
    // Smart Array drivers say it of each unit; "N/A" stands for a disk passed through.
    if (const auto level = device.Read("device/raid_level")) {
        return *level != "N/A";
    }
    const auto folder = FindFolder(device.devicePath, [](std::string_view name) {
        return std::count(name.begin(), name.end(), ':') == 3;
    });
    const std::string_view address = folder.substr(folder.rfind('/') + 1);
    const std::string_view behindHost = address.substr(std::min(address.find(':'), address.size() - 1) + 1);
    const auto channel = ParseNumber<std::uint32_t>(behindHost.substr(0, behindHost.find(':')));
    return std::any_of(std::begin(raidAdapters), std::end(raidAdapters), [&](const TRaidAdapter& row) {
        return row.driver == device.scsiHostDriver && channel && *channel >= row.firstVolumeChannel;
    });
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
    EDiskBacking backing;  // unless a rule below says otherwise
};

std::string NoState(const TBlockDevice&) {
    return {};
}

// clang-format off
constexpr TDiskKind diskKinds[] = {
    {"scsi", "sd", IsScsiDisk, FindScsiTransport, ReadScsiModel, ReadScsiIdentity, ScsiState,
     EDiskBacking::physical},
    {"nvme", "nvme", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("NVMe"); }, ReadNvmeModel,
     ReadNvmeIdentity, ScsiState, EDiskBacking::physical},
    {"nvme-subsystem", "nvme", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("NVMe"); },
     ReadNvmeModel, ReadNvmeIdentity, NoState, EDiskBacking::physical},
    {"mmc", "mmcblk", IsMmcDisk, [](const TBlockDevice&) { return std::string("MMC"); }, ReadMmcModel,
     ReadMmcIdentity, NoState, EDiskBacking::physical},
    {"virtio", "vd", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("virtio"); }, ReadNoModel,
     ReadVirtioIdentity, NoState, EDiskBacking::simulated},
    {"xen", "xvd", IsAlwaysDisk, [](const TBlockDevice&) { return std::string("Xen"); }, ReadNoModel,
     ReadNoIdentity, NoState, EDiskBacking::simulated},
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

bool IsSimulated(const TBlockDevice& device, const std::optional<std::string>& model) {
    const auto isAdapter = [&](std::string_view row) { return row == device.scsiHostDriver; };
    const auto isModel = [&](std::string_view row) { return model && model->starts_with(row); };
    return std::any_of(std::begin(simulatedAdapters), std::end(simulatedAdapters), isAdapter) ||
           std::any_of(std::begin(simulatedModels), std::end(simulatedModels), isModel);
}

EDiskBacking FindBacking(const TDiskKind& kind, const TBlockDevice& device,
                         const std::optional<std::string>& model) {
    if (IsSimulated(device, model)) {
        return EDiskBacking::simulated;
    }
    return kind.subsystem == "scsi" && IsRaidVolume(device) ? EDiskBacking::raidVolume : kind.backing;
}

bool IsMadeByKernel(const TBlockDevice& device) {
    return device.IsBelow("/devices/virtual/block/");
}

// Where the device stands below /sys/devices; kernels that have folders in /sys/block link the device.
std::string FindDevicePath(const ISystemFiles& files, const std::string& path) {
    if (const auto link = files.ReadLink(path); link.IsOk()) {
        return ResolveLinkText(path, link.value);
    }
    if (const auto link = files.ReadLink(path + "/device"); link.IsOk()) {
        return ResolveLinkText(path + "/device", link.value) + path.substr(path.rfind('/'));
    }
    return {};
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
    TBlockDevice device{files, kernelName, path, FindDevicePath(files, path), {}};
    if (IsMadeByKernel(device)) {
        return std::nullopt;
    }
    const TDiskKind* kind = FindKind(device);
    if (kind == nullptr || !kind->isDisk(device) || device.Read("hidden") == "1") {
        return std::nullopt;
    }
    device.scsiHostDriver = ReadScsiHostDriver(files, device.devicePath);
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
    disk.operationalStatus = FindDiskStatus(kind->readState(device));
    found.identity = kind->readIdentity(device);
    return found;
}

}  // namespace

std::vector<TDisk> ReadDisks(TCollection& collection) {
    std::vector<TDisk> disks;
    std::vector<TKeySource> keySources;
    for (const std::string& name : collection.GetFiles().List("/sys/block").value) {
        if (auto found = ReadDisk(collection.GetFiles(), name)) {
            keySources.push_back({std::move(found->identity), found->disk.position});
            disks.push_back(std::move(found->disk));
        }
    }
    std::vector<std::string> notes;
    auto keys = MakeUniqueKeys(keySources, "disk", notes);
    for (std::size_t i = 0; i < disks.size(); ++i) {
        disks[i].key = std::move(keys[i]);
    }
    for (std::string& note : notes) {
        collection.Note(std::move(note));
    }
    return disks;
}

}  // namespace NVORHOST
