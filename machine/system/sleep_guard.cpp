#include "machine/system/sleep_guard.h"

#include "machine/system/path_pattern.h"
#include "text/hex.h"
#include "text/lines.h"
#include "text/trim.h"

#include <algorithm>
#include <optional>

namespace NVORHOST {
namespace {

std::string_view FolderOf(std::string_view path) {
    return path.substr(0, path.rfind('/'));
}

std::string_view NameOf(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string ReadWord(const ISystemFiles& files, const std::string& path) {
    return std::string(TrimBlanks(files.ReadText(path).value));
}

std::optional<std::string> FindFunction(const ISystemFiles&, std::string_view path) {
    return std::string(FolderOf(path));
}

// The address of a slot, "0000:02:00", contains the bus below the port.
std::optional<std::string> FindPortOfSlot(const ISystemFiles& files, std::string_view path) {
    const std::string address = ReadWord(files, std::string(FolderOf(path)) + "/address");
    const auto [domain, rest] = SplitAt(address, ':');
    const auto [bus, device] = SplitAt(rest, ':');
    if (!IsHex(domain) || !IsHex(bus)) {
        return std::nullopt;
    }
    return "/sys/class/pci_bus/" + std::string(domain) + ":" + std::string(bus) + "/device";
}

std::optional<std::string> FindDeviceOfInterface(const ISystemFiles&, std::string_view path) {
    return std::string(FolderOf(path)) + "/device";
}

// The files whose reads wake a device. Functions are in several places: /sys/bus/pci/devices has links to the
// folders below /sys/devices. Their names are addresses, such as "0000:00:1f.2".
struct TWakingFile {
    std::string_view pattern;
    std::optional<std::string> (*findDevice)(const ISystemFiles& files, std::string_view path);
};

// clang-format off
constexpr TWakingFile wakingFiles[] = {
    {"/sys/**/*:*:*.*/config",                 FindFunction},
    {"/sys/**/*:*:*.*/current_link_speed",     FindFunction},
    {"/sys/**/*:*:*.*/current_link_width",     FindFunction},
    {"/sys/**/*:*:*.*/max_link_speed",         FindFunction},
    {"/sys/**/*:*:*.*/max_link_width",         FindFunction},
    {"/sys/**/*:*:*.*/resource0",              FindFunction},
    {"/sys/**/*:*:*.*/resource1",              FindFunction},
    {"/sys/**/*:*:*.*/resource2",              FindFunction},
    {"/sys/**/*:*:*.*/resource3",              FindFunction},
    {"/sys/**/*:*:*.*/resource4",              FindFunction},
    {"/sys/**/*:*:*.*/resource5",              FindFunction},
    {"/sys/**/*:*:*.*/rom",                    FindFunction},
    {"/sys/**/*:*:*.*/secondary_bus_number",   FindFunction},
    {"/sys/**/*:*:*.*/serial_number",          FindFunction},
    {"/sys/**/*:*:*.*/subordinate_bus_number", FindFunction},
    {"/sys/**/*:*:*.*/vpd",                    FindFunction},
    {"/sys/bus/pci/slots/*/latch",             FindPortOfSlot},
    {"/sys/class/net/*/duplex",                FindDeviceOfInterface},
    {"/sys/class/net/*/speed",                 FindDeviceOfInterface},
};
// clang-format on

bool IsAsleep(const ISystemFiles& files, const std::string& device) {
    const std::string power = ReadWord(files, device + "/power_state");
    if (!power.empty()) {
        return power == "D3cold";
    }
    return ReadWord(files, device + "/power/runtime_status") == "suspended";
}

bool WouldWake(const ISystemFiles& files, std::string_view path) {
    const std::string_view name = NameOf(path);
    const auto* const row = std::ranges::find_if(wakingFiles, [&](const TWakingFile& each) {
        return NameOf(each.pattern) == name && MatchesPathPattern(each.pattern, path);
    });
    if (row == std::end(wakingFiles)) {
        return false;
    }
    const auto device = row->findDevice(files, path);
    return device && IsAsleep(files, *device);
}

TReadResult<std::string> RefuseToWake(std::string_view path) {
    return {EReadStatus::asleep, {}, std::string(path) + ": the device is asleep"};
}

}  // namespace

TReadResult<std::string> TSleepGuard::ReadText(std::string_view path) const {
    return WouldWake(files_, path) ? RefuseToWake(path) : files_.ReadText(path);
}

TReadResult<std::string> TSleepGuard::ReadBytes(std::string_view path, std::size_t maxBytes) const {
    return WouldWake(files_, path) ? RefuseToWake(path) : files_.ReadBytes(path, maxBytes);
}

TReadResult<std::vector<std::string>> TSleepGuard::List(std::string_view path) const {
    return files_.List(path);
}

TReadResult<std::string> TSleepGuard::ReadLink(std::string_view path) const {
    return files_.ReadLink(path);
}

bool TSleepGuard::Exists(std::string_view path) const {
    return files_.Exists(path);
}

}  // namespace NVORHOST
