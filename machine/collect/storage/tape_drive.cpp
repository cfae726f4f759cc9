// KELSG_TapeDrive: one instance per SCSI tape drive, in the order of the kernel's names.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/storage/media_drive.h"
#include "machine/collect/storage/scsi_device.h"
#include "text/numbers.h"

#include <array>

namespace NVORHOST {
namespace {

constexpr TCimClass<TMediaDrive> tapeDriveClass{"KELSG_TapeDrive", mediaDriveRows};
constexpr const IClassDeclaration* classes[] = {&tapeDriveClass};

constexpr auto sourcePatterns = Join(scsiSources, std::array<TSourcePattern, 5>{
                                                      "/sys/class/scsi_tape",
                                                      "/sys/class/scsi_tape/st*",
                                                      "/sys/class/scsi_tape/st*/device",
                                                      "/sys/class/scsi_tape/st*/device/*",
                                                      "/sys/class/scsi_tape/st*/default_blksize",
                                                  });

// "st0": the drive. "nst0", "st0a" and so on are other ways to use it.
bool IsTapeDrive(std::string_view name) {
    return name.starts_with("st") && ParseNumber<std::uint32_t>(name.substr(2)).has_value();
}

TMediaDrive ReadDrive(const ISystemFiles& files, const std::string& folder, const TScsiDevice& device) {
    TMediaDrive drive;
    drive.description = FindScsiTransport(device) + " tape drive";
    const auto model = ReadScsiModel(device);
    drive.elementName = model ? model : drive.description;
    drive.operationalStatus = FindDiskStatus(ReadAttribute(files, device.folder + "/state").value_or(""));
    // 0 stands for blocks of any length, -1 for not known.
    const auto blockSize = ReadNumber<std::uint64_t>(files, folder + "/default_blksize");
    if (blockSize && *blockSize != 0) {
        drive.defaultBlockSizeBytes = blockSize;
    }
    return drive;
}

void CollectTapeDrives(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    std::vector<TKeyedRecord<TMediaDrive>> drives;
    for (const std::string& name : files.List("/sys/class/scsi_tape").value) {
        if (!IsTapeDrive(name)) {
            continue;
        }
        const std::string folder = "/sys/class/scsi_tape/" + name;
        const TScsiDevice device{files, folder + "/device", FindEntryDevice(files, folder)};
        const std::string position = ReadDevicePosition(files, device.devicePath);
        drives.push_back({ReadDrive(files, folder, device),
                          {ReadScsiIdentity(device), position.empty() ? name : position}});
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
