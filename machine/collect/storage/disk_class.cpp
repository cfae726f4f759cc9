#include "machine/collect/storage/disk_class.h"

namespace NVORHOST {
namespace {

struct TFamilyName {
    ERaidFamily family;
    std::string_view className;
};

constexpr TFamilyName familyNames[] = {
    {ERaidFamily::lsi, lsiDiskClassName},
    {ERaidFamily::lsiIde, lsiIdeDiskClassName},
    {ERaidFamily::sr, srDiskClassName},
};

}  // namespace

std::string_view GetDiskClassName(const TDisk& disk) {
    for (const TFamilyName& row : familyNames) {
        if (row.family == disk.raidFamily) {
            return row.className;
        }
    }
    return disk.backing == EDiskBacking::physical ? physicalDiskClassName : virtualDiskClassName;
}

}  // namespace NVORHOST
