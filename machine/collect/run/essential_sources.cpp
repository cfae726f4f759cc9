#include "machine/collect/run/essential_sources.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace NVORHOST {
namespace {

constexpr std::string_view essentialSources[] = {
    "/proc",
    "/proc/cpuinfo",
    "/proc/iomem",
    "/proc/meminfo",
    "/proc/net/fib_trie",
    "/sys/block",
    "/sys/bus/pci/devices",
    "/sys/bus/usb/devices",
    "/sys/devices/system/cpu",
    "/sys/firmware/dmi/tables/DMI",
};

constexpr int inputErrors[] = {EIO, EREMOTEIO, EBADMSG, EUCLEAN, ESTALE, ETIMEDOUT, ENOTCONN};

}  // namespace

bool IsEssentialSource(std::string_view path) {
    return std::ranges::find(essentialSources, path) != std::end(essentialSources);
}

bool IsInputError(int cause) {
    return std::ranges::find(inputErrors, cause) != std::end(inputErrors);
}

}  // namespace NVORHOST
