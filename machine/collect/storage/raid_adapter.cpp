#include "machine/collect/storage/raid_adapter.h"

#include "text/find_row.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <cstdint>

namespace NVORHOST {
namespace {

// The units on the channels from first to last are volumes; other units are devices that the adapter passes
// through. `driver` is the driver's name for its hosts in proc_name.
struct TRaidAdapter {
    std::string_view driver;
    std::uint32_t firstChannel;
    std::uint32_t lastChannel;
    ERaidFamily family;
};

constexpr std::uint32_t anyChannel = UINT32_MAX;

// The driver determines the family. 3w-xxxx and 3w-9xxx serve adapters with ATA ports only, so their volumes
// consist of ATA disks; 3w-sas and the MegaRAID drivers serve adapters of either kind. The last drivers have
// no class.
// clang-format off
constexpr TRaidAdapter raidAdapters[] = {
    {"megaraid_sas",    2, anyChannel, ERaidFamily::lsi},  // channels 0 and 1: disks
    {"megaraid",        0, anyChannel, ERaidFamily::lsi},  // name of megaraid_mbox; shows no disks
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
    return FindRow(raidAdapters, &TRaidAdapter::driver, driver);
}

}  // namespace

std::optional<ERaidFamily> FindRaidVolume(std::string_view hostDriver, std::string_view address) {
    const TRaidAdapter* adapter = FindAdapter(hostDriver);
    const std::string_view afterHost = SplitAt(address, ':').second;
    const auto channel = ParseNumber<std::uint32_t>(SplitAt(afterHost, ':').first);
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
