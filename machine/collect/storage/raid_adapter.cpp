#include "machine/collect/storage/raid_adapter.h"

#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <cstdint>

namespace NVORHOST {
namespace {

// Volumes are the units on the channels from first to last; what else the host shows are devices that the
// adapter passes through. `driver` is the name that the driver gives its hosts in proc_name.
struct TRaidAdapter {
    std::string_view driver;
    std::uint32_t firstChannel;
    std::uint32_t lastChannel;
    ERaidFamily family;
};

constexpr std::uint32_t anyChannel = UINT32_MAX;

// What a driver serves decides, whatever name stands on the board. 3w-xxxx and 3w-9xxx serve boards with ATA
// ports only, so their volumes are of ATA disks for sure; 3w-sas and the MegaRAID drivers serve boards of
// either kind and say nothing of the disks. Of the drivers at the end no class is named.
// clang-format off
constexpr TRaidAdapter raidAdapters[] = {
    {"megaraid_sas",    2, anyChannel, ERaidFamily::lsi},  // channels 0 and 1: disks
    {"megaraid",        0, anyChannel, ERaidFamily::lsi},  // of megaraid_mbox; shows no disks
    {"megaraid_legacy", 0, anyChannel, ERaidFamily::lsi},
    {"mptsas",          1, 1,          ERaidFamily::lsi},
    {"mpt2sas",         1, 1,          ERaidFamily::lsi},
    {"mpt3sas",         1, 1,          ERaidFamily::lsi},
    {"mpi3mr",          1, 1,          ERaidFamily::lsi},
    {"3w-sas",          0, anyChannel, ERaidFamily::lsi},
    {"3w-9xxx",         0, anyChannel, ERaidFamily::lsiIde},
    {"3w-xxxx",         0, anyChannel, ERaidFamily::lsiIde},
    {"ips",             0, 0,          ERaidFamily::sr},  // other channels: devices passed through
    {"aacraid",         0, 0,          ERaidFamily::sr},  // other channels: disks of its buses
    {"arcmsr",          0, anyChannel, ERaidFamily::other},
    {"dpt_i2o",         0, anyChannel, ERaidFamily::other},
    {"stex",            0, anyChannel, ERaidFamily::other},
};
// clang-format on

const TRaidAdapter* FindAdapter(std::string_view driver) {
    const auto row = std::find_if(std::begin(raidAdapters), std::end(raidAdapters),
                                  [&](const TRaidAdapter& adapter) { return adapter.driver == driver; });
    return row == std::end(raidAdapters) ? nullptr : &*row;
}

}  // namespace

std::optional<ERaidFamily> FindRaidVolume(std::string_view hostDriver, std::string_view address) {
    const TRaidAdapter* adapter = FindAdapter(hostDriver);
    const std::string_view behindHost = SplitAt(address, ':').second;
    const auto channel = ParseNumber<std::uint32_t>(SplitAt(behindHost, ':').first);
    if (adapter == nullptr || !channel || *channel < adapter->firstChannel ||
        *channel > adapter->lastChannel) {
        return std::nullopt;
    }
    return adapter->family;
}

ERaidFamily FindRaidFamily(std::string_view hostDriver) {
    const TRaidAdapter* adapter = FindAdapter(hostDriver);
    return adapter == nullptr ? ERaidFamily::other : adapter->family;
}

}  // namespace NVORHOST
