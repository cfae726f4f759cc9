#include "machine/collect/frame/dmi_folder.h"

#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::string_view folders[] = {"/sys/class/dmi/id", "/sys/devices/virtual/dmi/id"};

}  // namespace

std::optional<std::string> FindDmiFolder(const ISystemFiles& files) {
    for (const std::string_view folder : folders) {
        if (files.Exists(folder)) {
            return std::string(folder);
        }
    }
    return std::nullopt;
}

}  // namespace NVORHOST
