// KELSG_DisketteDrive: one instance per drive of the floppy driver.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/storage/media_drive.h"
#include "text/numbers.h"

#include <array>

namespace NVORHOST {
namespace {

constexpr TCimClass<TMediaDrive> disketteDriveClass{"KELSG_DisketteDrive", mediaDriveRows};
constexpr const IClassDeclaration* classes[] = {&disketteDriveClass};

constexpr std::array<TSourcePattern, 6> sourcePatterns{
    "/sys/block",
    "/sys/block/fd*",
    "/sys/block/fd*/device",
    "/sys/block/fd*/device/cmos",
    "/sys/block/fd*/size",
    "/sys/block/fd*/queue/logical_block_size",
};

// The type of a drive as the firmware's set-up memory has it, which the driver passes on.
struct TDriveType {
    std::string_view code;
    std::string_view name;
};

constexpr TDriveType driveTypes[] = {
    {"1", "5.25\" 360 KB diskette drive"}, {"2", "5.25\" 1.2 MB diskette drive"},
    {"3", "3.5\" 720 KB diskette drive"},  {"4", "3.5\" 1.44 MB diskette drive"},
    {"5", "3.5\" 2.88 MB diskette drive"}, {"6", "3.5\" 2.88 MB diskette drive"},
};

std::string FindTypeName(const std::string& code) {
    for (const TDriveType& row : driveTypes) {
        if (row.code == code) {
            return std::string(row.name);
        }
    }
    return "Diskette drive";
}

bool IsDisketteDrive(std::string_view kernelName) {
    return kernelName.starts_with("fd") && ParseNumber<std::uint32_t>(kernelName.substr(2)).has_value();
}

void SetSizes(const ISystemFiles& files, const std::string& folder, TMediaDrive& drive) {
    // What the driver shows until a diskette has been read.
    constexpr std::uint64_t shownWithoutDiskette = 8;
    const auto sectors = ReadNumber<std::uint64_t>(files, folder + "/size");
    if (sectors && *sectors > shownWithoutDiskette) {
        SetFixedBlocks(*sectors * 512, ReadNumber<std::uint64_t>(files, folder + "/queue/logical_block_size"),
                       drive);
    }
}

TMediaDrive ReadDrive(const ISystemFiles& files, const std::string& folder) {
    TMediaDrive drive;
    drive.elementName = FindTypeName(ReadAttribute(files, folder + "/device/cmos").value_or(""));
    drive.description = "Diskette drive";
    SetSizes(files, folder, drive);
    return drive;
}

void CollectDisketteDrives(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    std::vector<TKeyedRecord<TMediaDrive>> drives;
    for (const std::string& name : files.List("/sys/block").value) {
        if (!IsDisketteDrive(name)) {
            continue;
        }
        const std::string folder = "/sys/block/" + name;
        const std::string position = ReadDevicePosition(files, FindEntryDevice(files, folder));
        drives.push_back({ReadDrive(files, folder), {{}, position.empty() ? name : position}});
    }
    CommitKeyed(collection, disketteDriveClass, std::move(drives), &TMediaDrive::deviceId, "diskette drive");
}

}  // namespace

extern constinit const TCollector disketteDriveCollector{
    .name = "diskette-drive",
    .description = "Diskette drives",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectDisketteDrives,
};

}  // namespace NVORHOST
