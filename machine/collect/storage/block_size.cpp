#include "machine/collect/storage/block_size.h"

#include "machine/collect/frame/attribute.h"

namespace NVORHOST {

std::optional<std::uint64_t> ReadSectors(const ISystemFiles& files, const std::string& folder) {
    return ReadNumber<std::uint64_t>(files, folder + "/size");
}

std::optional<std::uint64_t> ReadBlockSize(const ISystemFiles& files, const std::string& folder) {
    return ReadNumber<std::uint64_t>(files, folder + "/queue/logical_block_size");
}

}  // namespace NVORHOST
