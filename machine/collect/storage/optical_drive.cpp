// KELSG_CDROMDrive and KELSG_DVDDrive: one instance per optical drive. A drive that reads DVDs, by the
// kernel's or udev's account or by its model name, is a KELSG_DVDDrive; every other one is a
// KELSG_CDROMDrive.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/storage/emulated_medium.h"
#include "machine/collect/storage/media_drive.h"
#include "machine/collect/storage/scsi_device.h"
#include "machine/parse/cdrom_info.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/udev_record.h"
#include "text/numbers.h"

#include <algorithm>
#include <array>

namespace NVORHOST {
namespace {

constexpr TCimClass<TMediaDrive> cdromDriveClass{"KELSG_CDROMDrive", mediaDriveRows};
constexpr TCimClass<TMediaDrive> dvdDriveClass{"KELSG_DVDDrive", mediaDriveRows};
constexpr const IClassDeclaration* classes[] = {&cdromDriveClass, &dvdDriveClass};

constexpr auto sourcePatterns = Join(scsiSources, std::array<TSourcePattern, 9>{
                                                      "/proc/sys/dev/cdrom/info",
                                                      "/run/udev/data/b*",
                                                      "/sys/block",
                                                      "/sys/block/sr*",
                                                      "/sys/block/sr*/dev",
                                                      "/sys/block/sr*/size",
                                                      "/sys/block/sr*/device",
                                                      "/sys/block/sr*/device/*",
                                                      "/sys/block/sr*/queue/logical_block_size",
                                                  });

struct TOpticalDrive {
    const ISystemFiles& files;
    std::string kernelName;
    std::string folder;
    TScsiDevice device;
    std::string udevRecord;

    std::optional<std::string_view> FindUdev(std::string_view key) const {
        return FindUdevProperty(udevRecord, key);
    }
    bool IsKnownToUdev() const { return FindUdev("ID_CDROM") == "1"; }
};

bool IsOpticalDrive(std::string_view kernelName) {
    return kernelName.starts_with("sr") && ParseNumber<std::uint32_t>(kernelName.substr(2)).has_value();
}

// The name that an ATA drive answers to SCSI is the first part of its own, which udev asked for.
std::optional<std::string> ReadModel(const TOpticalDrive& drive) {
    if (drive.FindUdev("ID_ATA") == "1") {
        const std::string model = DecodeUdevEscapes(drive.FindUdev("ID_MODEL_ENC").value_or(""));
        if (const auto trimmed = TrimBlanks(model); !trimmed.empty()) {
            return std::string(trimmed);
        }
    }
    return ReadScsiModel(drive.device);
}

// The kernel has no file with the serial number of an optical ATA drive.
std::string ReadIdentity(const TOpticalDrive& drive) {
    if (std::string identity = ReadScsiIdentity(drive.device); !identity.empty()) {
        return identity;
    }
    const auto serial = drive.FindUdev("ID_SERIAL_SHORT");
    return WithoutPlaceholder(std::string(serial.value_or(""))).value_or("");
}

// ---- what the drive can do

bool ModelSaysDvd(const std::string& model) {
    constexpr std::string_view words[] = {"DVD", "BD-R", "BDR", "BD-ROM", "BD-RE", "Blu-ray", "HD-DVD"};
    return std::any_of(std::begin(words), std::end(words),
                       [&](std::string_view word) { return model.find(word) != std::string::npos; });
}

// The kernel asked the drive; udev did, too; the name is the drive maker's word.
bool ReadsDvd(const TOpticalDrive& drive, const std::vector<TCdromAbilities>& abilities,
              const std::optional<std::string>& model) {
    for (const TCdromAbilities& row : abilities) {
        if (row.name == drive.kernelName && row.readsDvd) {
            return *row.readsDvd;
        }
    }
    if (drive.IsKnownToUdev()) {
        return drive.FindUdev("ID_CDROM_DVD") == "1";
    }
    return model && ModelSaysDvd(*model);
}

// ---- the disc in it

bool HoldsDisc(const TOpticalDrive& drive, std::uint64_t sectors) {
    // What the driver assumes of a disc that it cannot ask.
    constexpr std::uint64_t assumed = 0x1FFFFF;
    const bool mayHold = !drive.IsKnownToUdev() || drive.FindUdev("ID_CDROM_MEDIA") == "1";
    return sectors != 0 && sectors != assumed && mayHold;
}

void SetSizes(const TOpticalDrive& drive, TMediaDrive& record) {
    const auto sectors = ReadNumber<std::uint64_t>(drive.files, drive.folder + "/size");
    if (sectors && HoldsDisc(drive, *sectors)) {
        SetFixedBlocks(*sectors * 512,
                       ReadNumber<std::uint64_t>(drive.files, drive.folder + "/queue/logical_block_size"),
                       record);
    }
}

// ---- one drive, all drives

TOpticalDrive ReadDrive(const ISystemFiles& files, const std::string& kernelName) {
    const std::string folder = "/sys/block/" + kernelName;
    TOpticalDrive drive{
        files, kernelName, folder, {files, folder + "/device", FindEntryDevice(files, folder)}, {}};
    if (const auto deviceNumber = ReadAttribute(files, folder + "/dev")) {
        drive.udevRecord = files.ReadText("/run/udev/data/b" + *deviceNumber).value;
    }
    return drive;
}

struct TFoundDrive {
    const TCimClass<TMediaDrive>* cimClass;  // never null
    TMediaDrive record;
};

TFoundDrive MakeDrive(const TOpticalDrive& drive, const std::vector<TCdromAbilities>& abilities) {
    const auto model = ReadModel(drive);
    const bool readsDvd = ReadsDvd(drive, abilities, model);
    TFoundDrive found{readsDvd ? &dvdDriveClass : &cdromDriveClass, {}};
    TMediaDrive& record = found.record;
    record.description = FindScsiTransport(drive.device) +
                         (IsEmulatedMedium(drive.device, model) ? " virtual" : "") +
                         (readsDvd ? " DVD drive" : " CD-ROM drive");
    record.elementName = model ? model : record.description;
    record.operationalStatus =
        FindDiskStatus(ReadAttribute(drive.files, drive.device.folder + "/state").value_or(""));
    SetSizes(drive, record);
    return found;
}

void CollectOpticalDrives(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const auto abilities = ParseCdromInfo(files.ReadText("/proc/sys/dev/cdrom/info").value);
    std::vector<TFoundDrive> drives;
    std::vector<TKeySource> keySources;
    for (const std::string& name : files.List("/sys/block").value) {
        if (!IsOpticalDrive(name)) {
            continue;
        }
        const TOpticalDrive drive = ReadDrive(files, name);
        const std::string position = ReadDevicePosition(files, drive.device.devicePath);
        drives.push_back(MakeDrive(drive, abilities));
        keySources.push_back({ReadIdentity(drive), position.empty() ? name : position});
    }
    const auto keys = collection.MakeKeys(keySources, "optical drive");
    for (std::size_t i = 0; i < drives.size(); ++i) {
        drives[i].record.deviceId = keys[i];
        collection.Commit(*drives[i].cimClass, drives[i].record);
    }
}

}  // namespace

extern constinit const TCollector opticalDriveCollector{
    .name = "optical-drive",
    .description = "CD and DVD drives",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectOpticalDrives,
};

}  // namespace NVORHOST
