#include "machine/collect/storage/media_drive.h"

namespace NVORHOST {

void SetFixedBlocks(std::optional<std::uint64_t> sizeBytes, std::optional<std::uint64_t> blockSizeBytes,
                    TMediaDrive& drive) {
    constexpr std::uint64_t bytesInKB = 1000;  // as the CIM schema defines it
    drive.defaultBlockSizeBytes = blockSizeBytes;
    drive.maxBlockSizeBytes = blockSizeBytes;
    drive.minBlockSizeBytes = blockSizeBytes;
    if (sizeBytes) {
        drive.maxMediaSizeKB = *sizeBytes / bytesInKB;
    }
}

}  // namespace NVORHOST
