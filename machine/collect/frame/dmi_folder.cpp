#include "machine/collect/frame/dmi_folder.h"

namespace NVORHOST {
namespace {

constexpr std::string_view folders[] = {"/sys/class/dmi/id", "/sys/devices/virtual/dmi/id"};

}  // namespace

std::string_view FindDmiFolder(const ISystemFiles& files) {
    for (const std::string_view folder : folders) {
        if (files.Exists(folder)) {
            return folder;
        }
    }
    return {};
}

}  // namespace NVORHOST
