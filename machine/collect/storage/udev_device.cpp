#include "machine/collect/storage/udev_device.h"

#include "machine/collect/frame/attribute.h"

namespace NVORHOST {

std::string ReadUdevRecord(const ISystemFiles& files, const std::string& folder) {
    const auto deviceNumber = ReadAttribute(files, folder + "/dev");
    return deviceNumber ? files.ReadText("/run/udev/data/b" + *deviceNumber).value : std::string();
}

}  // namespace NVORHOST
