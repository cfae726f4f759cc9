// KELSG_TapeDrive: one instance per SCSI tape drive, in the order of the kernel's names.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/storage/media_drive.h"
#include "machine/collect/storage/scsi_device.h"

#include <array>

namespace NVORHOST {
namespace {

constexpr auto mediaDriveRows = MakeMediaDriveRows({
    .name = "@/device/vendor; @/device/model; @/device/vpd_pg83",
    .description = "@/device",
    .key = "@/device/wwid; @/device/vpd_pg80; /sys/devices/**/serial; @",
    .status = "@/device/state",
    .blockSize = "number @/default_blksize",
    .otherBlockSizes = "none: not exported for tapes",
    .mediaSize = "none: not exported for tapes",
    .mediaState = "none: not exported for removable media",
});
constexpr TCimClass<TMediaDrive> tapeDriveClass{"KELSG_TapeDrive", mediaDriveRows};
constexpr const IClassDeclaration* classes[] = {&tapeDriveClass};

constexpr auto sourcePatterns = Join(scsiSources, std::array<TSourcePattern, 5>{
                                                      "/sys/class/scsi_tape",
                                                      "/sys/class/scsi_tape/st*",
                                                      "/sys/class/scsi_tape/st*/device",
                                                      "/sys/class/scsi_tape/st*/device/*",
                                                      "/sys/class/scsi_tape/st*/default_blksize",
                                                  });

TMediaDrive ReadDrive(const ISystemFiles& files, const std::string& folder, const TScsiDevice& device) {
    TMediaDrive drive;
    drive.place.folder = folder;
    drive.description = FindScsiTransport(device) + " tape drive";
    const auto model = ReadScsiModel(device);
    drive.elementName = model ? model : drive.description;
    drive.operationalStatus = FindDiskStatus(ReadAttribute(files, device.folder + "/state").value_or(""));
    // 0 means blocks of variable length; -1, an unknown length, is not a valid unsigned number.
    const auto blockSize = ReadNumber<std::uint64_t>(files, folder + "/default_blksize");
    if (blockSize && *blockSize != 0) {
        drive.defaultBlockSizeBytes = blockSize;
    }
    return drive;
}

void CollectTapeDrives(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    std::vector<TKeyedRecord<TMediaDrive>> drives;
    // "st0" is the drive; "nst0", "st0a" and the like are other modes of the same drive.
    for (const std::string& name : ListNumbered(files, "/sys/class/scsi_tape", "st")) {
        const std::string folder = "/sys/class/scsi_tape/" + name;
        const TScsiDevice device = FindScsiDevice(files, folder);
        drives.push_back(
            {ReadDrive(files, folder, device), {ReadScsiIdentity(device), ReadEntryPosition(files, folder)}});
    }
    CommitKeyed(collection, tapeDriveClass, std::move(drives), &TMediaDrive::deviceId, "tape drive");
}

}  // namespace

extern constinit const TCollector tapeDriveCollector{
    .name = "tape-drive",
    .description = "Tape drives",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectTapeDrives,
};

}  // namespace NVORHOST
