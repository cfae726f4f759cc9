// KELSG_DisketteDrive: one instance per drive of the floppy driver.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/storage/block_size.h"
#include "machine/collect/storage/media_drive.h"
#include "text/find_row.h"

#include <array>

namespace NVORHOST {
namespace {

constexpr auto mediaDriveRows = MakeMediaDriveRows({
    .name = "@/device/cmos",
    .description = "constant",
    .key = "@",
    .status = "none: no state is exported",
    .blockSize = "number @/queue/logical_block_size",
    .otherBlockSizes = "property DefaultBlockSize",
    .mediaSize = "number @/size",
    .mediaState = "none: not exported for removable media",
});
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

// Drive types of the CMOS memory, which the floppy driver shows.
struct TDriveType {
    std::string_view code;
    std::string_view name;
};

constexpr TDriveType driveTypes[] = {
    {"1", "5.25\" 360 KB diskette drive"}, {"2", "5.25\" 1.2 MB diskette drive"},
    {"3", "3.5\" 720 KB diskette drive"},  {"4", "3.5\" 1.44 MB diskette drive"},
    {"5", "3.5\" 2.88 MB diskette drive"}, {"6", "3.5\" 2.88 MB diskette drive"},
};

constexpr std::string_view anyDriveName = "Diskette drive";

void SetSizes(const ISystemFiles& files, const std::string& folder, TMediaDrive& drive) {
    // The driver's default until a diskette has been read.
    constexpr std::uint64_t sectorsWithoutDiskette = 8;
    const auto sectors = ReadSectors(files, folder);
    if (sectors && *sectors > sectorsWithoutDiskette) {
        SetFixedBlocks(SectorsToBytes(*sectors), ReadBlockSize(files, folder), drive);
    }
}

TMediaDrive ReadDrive(const ISystemFiles& files, const std::string& folder) {
    TMediaDrive drive;
    drive.place.folder = folder;
    const std::string type = ReadAttribute(files, folder + "/device/cmos").value_or("");
    drive.elementName =
        FindCell(driveTypes, &TDriveType::code, type, &TDriveType::name).value_or(anyDriveName);
    drive.description = anyDriveName;
    SetSizes(files, folder, drive);
    return drive;
}

void CollectDisketteDrives(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    std::vector<TKeyedRecord<TMediaDrive>> drives;
    for (const std::string& name : ListNumbered(files, "/sys/block", "fd")) {
        const std::string folder = "/sys/block/" + name;
        drives.push_back({ReadDrive(files, folder), {std::nullopt, ReadEntryPosition(files, folder)}});
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
