// Sizes of block devices in sysfs.
#pragma once

#include "machine/system/system_files.h"

#include <cstdint>
#include <optional>
#include <string>

namespace NVORHOST {

/// Converts a count of sectors, which the kernel always gives in units of 512 bytes, to bytes.
constexpr std::uint64_t SectorsToBytes(std::uint64_t sectors) {
    constexpr std::uint64_t sectorBytes = 512;
    return sectors * sectorBytes;
}

/// Reads the size of the block device in `folder`, such as "/sys/block/sda", in sectors of 512 bytes.
std::optional<std::uint64_t> ReadSectors(const ISystemFiles& files, const std::string& folder);

/// Reads the logical block size in bytes of the block device in `folder`.
std::optional<std::uint64_t> ReadBlockSize(const ISystemFiles& files, const std::string& folder);

}  // namespace NVORHOST
