#include "inventory/model/resource_id.h"

#include "writer/catalogue/md5.h"

#include <array>

namespace NINVENTORY {

std::string MakeKey(std::string_view resourceType, std::string_view keyProperty, std::string_view value) {
    return MakeBareKey(resourceType).append("/").append(keyProperty).append("=").append(value);
}

std::string MakeBareKey(std::string_view resourceType) {
    return std::string("kel-cdm:///CDM-").append(resourceType);
}

std::string MakeSystemKey(std::string_view machineType, std::string_view serialNumber) {
    return MakeKey("NOXSystemInfo", "MachineType", machineType).append("/SerialNumber=").append(serialNumber);
}

// The digest includes the key's terminating zero byte.
std::string DigestOf(const std::string& key) {
    std::array<unsigned char, digestTextLength> digest{};
    WriteDigestText(key.c_str(), static_cast<unsigned int>(key.size() + 1), digest.data());
    return {digest.begin(), digest.end()};
}

}  // namespace NINVENTORY
