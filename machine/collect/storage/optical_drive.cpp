// KELSG_CDROMDrive and KELSG_DVDDrive: one instance per optical drive. A drive that reads DVDs, by the
// kernel's or udev's account or by its model name, is a KELSG_DVDDrive; every other one is a
// KELSG_CDROMDrive.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/storage/block_size.h"
#include "machine/collect/storage/emulated_medium.h"
#include "machine/collect/storage/media_drive.h"
#include "machine/collect/storage/scsi_device.h"
#include "machine/collect/storage/udev_device.h"
#include "machine/parse/cdrom_info.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/udev_record.h"
#include "text/find_row.h"
#include "text/trim.h"

#include <algorithm>
#include <array>

namespace NVORHOST {
namespace {

constexpr auto mediaDriveRows = MakeMediaDriveRows({
    .name = "@udev ID_MODEL_ENC; @/device/vendor; @/device/model",
    .description = "/proc/sys/dev/cdrom/info; @udev ID_CDROM_DVD",
    .key = "@/device/wwid; @/device/vpd_pg80; @udev ID_SERIAL_SHORT; /sys/devices/**/serial; @",
    .status = "@/device/state",
    .blockSize = "number @/queue/logical_block_size",
    .otherBlockSizes = "property DefaultBlockSize",
    .mediaSize = "number @/size; @udev ID_CDROM_MEDIA",
    .mediaState = "none: not exported for removable media",
});
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

// For an ATA drive the SCSI model is truncated; udev has the whole model name.
std::optional<std::string> ReadModel(const TOpticalDrive& drive) {
    if (drive.FindUdev("ID_ATA") == "1") {
        const std::string model = DecodeUdevEscapes(drive.FindUdev("ID_MODEL_ENC").value_or(""));
        if (const auto trimmed = TrimBlanks(model); !trimmed.empty()) {
            return std::string(trimmed);
        }
    }
    return ReadScsiModel(drive.device);
}

// Falls back to udev, because the kernel has no file with the serial number of an optical ATA drive.
std::optional<std::string> ReadIdentity(const TOpticalDrive& drive) {
    if (auto identity = ReadScsiIdentity(drive.device)) {
        return identity;
    }
    return WithoutPlaceholder(std::string(drive.FindUdev("ID_SERIAL_SHORT").value_or("")));
}

bool IsDvdModel(const std::string& model) {
    constexpr std::string_view words[] = {"DVD", "BD-R", "BDR", "BD-ROM", "BD-RE", "Blu-ray", "HD-DVD"};
    return std::ranges::any_of(words,
                               [&](std::string_view word) { return model.find(word) != std::string::npos; });
}

// The kernel's list comes first, as it has queried the drive itself; then udev; then the model name.
bool ReadsDvd(const TOpticalDrive& drive, const std::vector<TCdromAbilities>& abilities,
              const std::optional<std::string>& model) {
    const auto* row = FindRow(abilities, &TCdromAbilities::name, drive.kernelName);
    if (row != nullptr && row->readsDvd) {
        return *row->readsDvd;
    }
    if (drive.IsKnownToUdev()) {
        return drive.FindUdev("ID_CDROM_DVD") == "1";
    }
    return model && IsDvdModel(*model);
}

bool HoldsDisc(const TOpticalDrive& drive, std::uint64_t sectors) {
    // The driver's default for a disc whose size it cannot read.
    constexpr std::uint64_t assumed = 0x1FFFFF;
    const bool mayHold = !drive.IsKnownToUdev() || drive.FindUdev("ID_CDROM_MEDIA") == "1";
    return sectors != 0 && sectors != assumed && mayHold;
}

void SetSizes(const TOpticalDrive& drive, TMediaDrive& record) {
    const auto sectors = ReadSectors(drive.files, drive.folder);
    if (sectors && HoldsDisc(drive, *sectors)) {
        SetFixedBlocks(SectorsToBytes(*sectors), ReadBlockSize(drive.files, drive.folder), record);
    }
}

TOpticalDrive ReadDrive(const ISystemFiles& files, const std::string& kernelName) {
    const std::string folder = "/sys/block/" + kernelName;
    return {files, kernelName, folder, FindScsiDevice(files, folder), ReadUdevRecord(files, folder)};
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
    record.place.folder = drive.folder;
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
    std::vector<TKeyedRecord<TFoundDrive>> drives;
    for (const std::string& name : ListNumbered(files, "/sys/block", "sr")) {
        const TOpticalDrive drive = ReadDrive(files, name);
        drives.push_back(
            {MakeDrive(drive, abilities), {ReadIdentity(drive), ReadEntryPosition(files, drive.folder)}});
    }
    // Drives of both classes share one set of keys.
    const auto key = [](TFoundDrive & drive) -> auto& {
        return drive.record.deviceId;
    };
    for (const TFoundDrive& drive : AssignKeys(collection, std::move(drives), key, "optical drive")) {
        collection.Commit(*drive.cimClass, drive.record);
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
