#include "machine/collect/storage/disk_details.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/storage/scsi_device.h"
#include "machine/collect/storage/udev_device.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/scsi_vpd.h"
#include "machine/parse/udev_record.h"
#include "os/path_walk.h"
#include "text/find_row.h"

#include <string_view>

namespace NVORHOST {
namespace {

struct TBlockFolder {
    const ISystemFiles& files;
    std::string path;                       // "/sys/block/sda"
    std::optional<std::string> devicePath;  // path below /sys/devices; absent if the tree has no links

    std::optional<std::string> Read(std::string_view attribute) const {
        return ReadAttribute(files, path + "/" + std::string(attribute));
    }
    TScsiDevice ToScsi() const { return {files, path + "/device", devicePath}; }
};

std::optional<std::string> ReadNothing(const TBlockFolder&) {
    return std::nullopt;
}

template <const char* attribute>
std::optional<std::string> ReadIdentifier(const TBlockFolder& disk) {
    return WithoutPlaceholder(disk.Read(attribute));
}

constexpr char deviceSerial[] = "device/serial";
constexpr char blockSerial[] = "serial";
constexpr char nvmeFirmware[] = "device/firmware_rev";
constexpr char mmcFirmware[] = "device/fwrev";
constexpr char worldWideName[] = "wwid";

std::optional<std::string> ReadScsiSerialOf(const TBlockFolder& disk) {
    return ReadScsiSerial(disk.ToScsi());
}

std::optional<std::string> ReadScsiWorldWideNameOf(const TBlockFolder& disk) {
    return ReadScsiWorldWideName(disk.ToScsi());
}

std::optional<std::string> ReadScsiFirmware(const TBlockFolder& disk) {
    return WithoutPlaceholder(disk.Read("device/rev"));
}

// The kernel has only the last four characters of an ATA disk's firmware revision; the udev database has all
// eight.
std::optional<std::string> ReadAtaFirmware(const TBlockFolder& disk) {
    const std::string record = ReadUdevRecord(disk.files, disk.path);
    const auto revision = FindUdevProperty(record, "ID_REVISION");
    return FindUdevProperty(record, "ID_BUS") == "ata" && revision
               ? WithoutPlaceholder(std::optional<std::string>(*revision))
               : std::nullopt;
}

struct TKind {
    std::string_view transport;
    std::optional<std::string> (*readSerial)(const TBlockFolder& disk);
    std::optional<std::string> (*readFirmware)(const TBlockFolder& disk);
    std::optional<std::string> (*readWorldWideName)(const TBlockFolder& disk);
};

// clang-format off
constexpr TKind kinds[] = {
    {"ATA",    ReadScsiSerialOf,             ReadAtaFirmware,              ReadScsiWorldWideNameOf},
    {"NVMe",   ReadIdentifier<deviceSerial>, ReadIdentifier<nvmeFirmware>, ReadIdentifier<worldWideName>},
    {"MMC",    ReadIdentifier<deviceSerial>, ReadIdentifier<mmcFirmware>,  ReadNothing},
    {"virtio", ReadIdentifier<blockSerial>,  ReadNothing,                  ReadNothing},
    {"Xen",    ReadNothing,                  ReadNothing,                  ReadNothing},
};
// clang-format on

constexpr TKind scsiKind{"SCSI", ReadScsiSerialOf, ReadScsiFirmware, ReadScsiWorldWideNameOf};

const TKind& GetKind(const TDisk& disk) {
    const TKind* kind = FindRow(kinds, &TKind::transport, disk.transport);
    return kind == nullptr ? scsiKind : *kind;
}

// The kernel makes up a name of vendor, model and serial number for a disk without one of its own.
std::optional<std::string> WithoutMadeUpName(std::optional<std::string> name) {
    const bool isOwn =
        name && (name->starts_with("naa.") || name->starts_with("eui.") || name->starts_with("uuid."));
    return isOwn && !IsPlaceholder(name->substr(name->find('.') + 1)) ? name : std::nullopt;
}

// Adds the port of an ATA adapter, from 1. Kernels before 2.6.39 do not show it.
void AddAtaPort(const TBlockFolder& disk, TIdentifyingInfo& info) {
    if (const auto folder = FindAtaPortFolder(disk.ToScsi())) {
        const std::string name = folder->substr(folder->rfind('/') + 1);
        info.Add("ATA port", ReadAttribute(disk.files, *folder + "/ata_port/" + name + "/port_no"));
    }
}

void AddSasPlace(const TBlockFolder& disk, TIdentifyingInfo& info) {
    if (const auto folder = FindSasDeviceFolder(disk.ToScsi())) {
        const std::string attributes =
            *folder + "/sas_device/" + folder->substr(folder->rfind('/') + 1) + "/";
        info.Add("SAS address", ReadAttribute(disk.files, attributes + "sas_address"));
        info.Add("SAS phy", ReadAttribute(disk.files, attributes + "phy_identifier"));
        info.Add("SAS enclosure",
                 WithoutPlaceholder(ReadAttribute(disk.files, attributes + "enclosure_identifier")));
        info.Add("SAS bay", ReadAttribute(disk.files, attributes + "bay_identifier"));
    }
}

// Adds the slot of an enclosure that reports its slots. The device has a link "enclosure_device:Slot 01".
void AddEnclosureSlot(const TBlockFolder& disk, TIdentifyingInfo& info) {
    constexpr std::string_view prefix = "enclosure_device:";
    const std::string folder = disk.path + "/device";
    for (const std::string& name : disk.files.List(folder).value) {
        const auto link =
            name.starts_with(prefix) ? disk.files.ReadLink(folder + "/" + name) : TReadResult<std::string>{};
        if (!link.IsOk() || !disk.devicePath) {
            continue;
        }
        const std::string deviceFolder = disk.devicePath->substr(0, disk.devicePath->find("/block/"));
        const std::string slot = ResolveLinkText(deviceFolder + "/" + name, link.value);
        const std::string enclosure = slot.substr(0, slot.rfind('/'));
        info.Add("Enclosure", WithoutPlaceholder(ReadAttribute(disk.files, enclosure + "/id")));
        info.Add("Enclosure slot", name.substr(prefix.size()));
        info.Add("Enclosure slot number", ReadAttribute(disk.files, slot + "/slot"));
    }
}

// Adds the ports on the way from the controller: "3.1" is port 1 of the hub at port 3.
void AddUsbPort(const TBlockFolder& disk, TIdentifyingInfo& info) {
    if (const auto folder = FindUsbDeviceFolder(disk.ToScsi())) {
        const std::string name = folder->substr(folder->rfind('/') + 1);
        info.Add("USB port path", name.substr(name.find('-') + 1));
    }
}

void AddPlace(const TBlockFolder& disk, TIdentifyingInfo& info) {
    info.Add("PCI function", disk.devicePath ? FindPciFunction(*disk.devicePath) : std::nullopt);
    info.Add("NVMe namespace", disk.Read("nsid"));
    AddAtaPort(disk, info);
    AddSasPlace(disk, info);
    AddEnclosureSlot(disk, info);
    AddUsbPort(disk, info);
}

// The kernel's default is "rotational", also for USB sticks and card readers, so it is ignored for removable
// media. The page of the disk itself counts first.
void SetMedia(const TBlockFolder& folder, const TDisk& disk, TDiskDetails& details) {
    constexpr std::size_t pageBytes = 64;
    if (disk.backing != EDiskBacking::physical) {
        return;
    }
    const auto rotation =
        ParseVpdRotation(folder.files.ReadBytes(folder.path + "/device/vpd_pgb1", pageBytes).value);
    if (rotation) {
        details.media = rotation->isSolidState ? "solid state" : "rotating";
        details.rotationsPerMinute = rotation->rotationsPerMinute;
    } else if (disk.isRotational && (!*disk.isRotational || !disk.isRemovable.value_or(false))) {
        details.media = *disk.isRotational ? "rotating" : "solid state";
    }
}

}  // namespace

TDiskDetails ReadDiskDetails(TCollection& collection, const TDisk& disk) {
    const ISystemFiles& files = collection.GetFiles();
    const std::string path = "/sys/block/" + disk.kernelName;
    const TBlockFolder folder{files, path, FindEntryDevice(files, path)};
    const TKind& kind = GetKind(disk);
    TDiskDetails details;
    details.identifying.Add("Serial number", kind.readSerial(folder));
    details.identifying.Add("Firmware revision", kind.readFirmware(folder));
    details.identifying.Add("World-wide name", WithoutMadeUpName(kind.readWorldWideName(folder)));
    AddPlace(folder, details.identifying);
    SetMedia(folder, disk, details);
    details.physicalBlockSizeBytes = ReadNumber<std::uint64_t>(files, path + "/queue/physical_block_size");
    return details;
}

}  // namespace NVORHOST
