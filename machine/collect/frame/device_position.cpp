#include "machine/collect/frame/device_position.h"

#include "machine/collect/frame/attribute.h"
#include "os/path_walk.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <vector>

namespace NVORHOST {
namespace {

constexpr std::string_view devicesRoot = "/sys/devices/";
constexpr std::string_view pciFunction = "%:%:%.#";

// True if `text` matches `pattern`: "#" matches one or more decimal digits, "%" one or more hexadecimal
// digits, a final "*" any rest, and every other character itself.
bool MatchesStepPattern(std::string_view text, std::string_view pattern) {
    for (const char c : pattern) {
        if (c == '*') {
            return true;
        }
        if (c == '#' || c == '%') {
            const std::string_view digits = c == '#' ? "0123456789" : "0123456789abcdefABCDEF";
            const auto length = std::min(text.find_first_not_of(digits), text.size());
            if (length == 0) {
                return false;
            }
            text.remove_prefix(length);
        } else {
            if (text.empty() || text.front() != c) {
                return false;
            }
            text.remove_prefix(1);
        }
    }
    return text.empty();
}

// One name on the path to the device.
struct TStep {
    std::string_view name;
    std::string_view path;  // up to and including the name
    bool isBelowSas = false;
};

std::optional<std::string> Drop(const ISystemFiles&, const TStep&) {
    return std::nullopt;
}

std::optional<std::string> Keep(const ISystemFiles&, const TStep& step) {
    return std::string(step.name);
}

// The kernel numbers hosts across all adapters, so the host is dropped. A PCI adapter with several hosts (one
// per port, on kernels that do not show ports) gets the 1-based number of the host within the adapter.
std::optional<std::string> HostOfAdapter(const ISystemFiles& files, const TStep& step) {
    const auto folder = step.path.substr(0, step.path.rfind('/'));
    if (!MatchesStepPattern(folder.substr(folder.rfind('/') + 1), pciFunction)) {
        return std::nullopt;
    }
    std::vector<std::uint32_t> hosts;
    for (const std::string& name : files.List(folder).value) {
        if (MatchesStepPattern(name, "host#")) {
            hosts.push_back(ParseNumber<std::uint32_t>(std::string_view(name).substr(4)).value_or(0));
        }
    }
    if (hosts.size() < 2) {
        return std::nullopt;
    }
    const auto own = ParseNumber<std::uint32_t>(step.name.substr(4)).value_or(0);
    const auto before = std::count_if(hosts.begin(), hosts.end(), [&](auto host) { return host < own; });
    return "host-" + std::to_string(before + 1);
}

// The kernel numbers "ataN" across all controllers; `port_no` is the number within one controller.
std::optional<std::string> AtaPort(const ISystemFiles& files, const TStep& step) {
    const std::string name(step.name);
    const auto port = ReadAttribute(files, std::string(step.path) + "/ata_port/" + name + "/port_no");
    return port ? std::optional("ata-" + *port) : std::nullopt;
}

// Bus numbers follow the order of discovery. The USB generation is used instead: a controller with two root
// hubs has one per generation.
std::optional<std::string> UsbBus(const ISystemFiles& files, const TStep& step) {
    const auto version = ReadAttribute(files, std::string(step.path) + "/version");
    return version ? std::optional("usb" + version->substr(0, version->find('.'))) : std::nullopt;
}

// "1-2.3:1.0" is bus 1, port 3 of the hub at port 2, configuration 1, interface 0. The devices on the path,
// "1-2" and "1-2.3", add nothing to that.
std::optional<std::string> UsbInterface(const ISystemFiles&, const TStep& step) {
    if (step.name.find(':') == std::string_view::npos) {
        return std::nullopt;
    }
    return std::string(step.name.substr(step.name.find('-') + 1));
}

// SAS targets are numbered in the order of discovery; the SAS address of the end device is used instead.
std::optional<std::string> SasEndDevice(const ISystemFiles& files, const TStep& step) {
    const std::string name(step.name);
    const auto address =
        ReadAttribute(files, std::string(step.path) + "/sas_device/" + name + "/sas_address");
    return address ? std::optional("sas-" + *address) : std::nullopt;
}

// "H:C:T:L" is kept without the host's number; below a SAS end device only the unit is kept.
std::optional<std::string> ScsiAddress(const ISystemFiles&, const TStep& step) {
    const auto colon = step.isBelowSas ? step.name.rfind(':') : step.name.find(':');
    return std::string(step.name.substr(colon + 1));
}

struct TStepRule {
    std::string_view pattern;
    std::optional<std::string> (*makePart)(const ISystemFiles& files, const TStep& step);
};

// The first matching row counts; a name without a matching row is kept.
// clang-format off
constexpr TStepRule stepRules[] = {
    {"ata#",           AtaPort},
    {"usb#",           UsbBus},
    {"#-#*",           UsbInterface},
    {"end_device-*",   SasEndDevice},
    {"#:#:#:#",        ScsiAddress},
    {"pci%:%",         Drop},
    {"platform",       Drop},
    {"virtual",        Drop},
    {"host#",          HostOfAdapter},
    {"target#:#:#",    Drop},
    {"port-#:*",       Drop},
    {"expander-*",     Drop},
    {"rport-*",        Drop},
    {"session#",       Drop},
    {"block",          Drop},
    {"net",            Drop},
    {"scsi_tape",      Drop},
    {"virtio#",        Drop},
    {"nvme",           Drop},
    {"nvme#",          Drop},
    {"nvme-subsystem", Drop},
    {"nvme-subsys#",   Drop},
    {"mmc_host",       Drop},
    {"mmc#",           Drop},
    {"mmc#:%",         Drop},
};
// clang-format on

constexpr TStepRule otherStep{"*", Keep};

// "nvme0n2" is name space 2; other kernel names are not related to the position.
std::optional<std::string> LastPart(std::string_view kernelName) {
    if (MatchesStepPattern(kernelName, "nvme#n#")) {
        return std::string(kernelName.substr(kernelName.rfind('n')));
    }
    return std::nullopt;
}

const TStepRule& FindRule(std::string_view name) {
    for (const TStepRule& rule : stepRules) {
        if (MatchesStepPattern(name, rule.pattern)) {
            return rule;
        }
    }
    return otherStep;
}

std::string Join(const std::vector<std::string>& parts) {
    std::string joined;
    for (const std::string& part : parts) {
        joined += (joined.empty() ? "" : "/") + part;
    }
    return joined;
}

}  // namespace

std::optional<std::string> FindEntryDevice(const ISystemFiles& files, const std::string& entry) {
    if (const auto link = files.ReadLink(entry); link.IsOk()) {
        return ResolveLinkText(entry, link.value);
    }
    if (const auto link = files.ReadLink(entry + "/device"); link.IsOk()) {
        return ResolveLinkText(entry + "/device", link.value) + entry.substr(entry.rfind('/'));
    }
    return std::nullopt;
}

std::optional<std::string> ReadDevicePosition(const ISystemFiles& files, std::string_view devicePath) {
    if (!devicePath.starts_with(devicesRoot)) {
        return std::nullopt;
    }
    std::vector<std::string> parts;
    bool isBelowSas = false;
    std::size_t start = devicesRoot.size();
    while (true) {
        const auto end = devicePath.find('/', start);
        const std::string_view name = devicePath.substr(start, end - start);
        if (end == std::string_view::npos) {
            if (auto part = LastPart(name)) {
                parts.push_back(std::move(*part));
            }
            return parts.empty() ? std::nullopt : std::optional(Join(parts));
        }
        const TStep step{name, devicePath.substr(0, end), isBelowSas};
        if (MatchesStepPattern(name, pciFunction)) {
            parts.clear();  // the address of a function is unique, so bridges above it are redundant
        }
        if (auto part = FindRule(name).makePart(files, step)) {
            parts.push_back(std::move(*part));
        }
        isBelowSas = isBelowSas || MatchesStepPattern(name, "end_device-*");
        start = end + 1;
    }
}

std::optional<std::string> FindPciFunction(std::string_view devicePath) {
    while (!devicePath.empty()) {
        const auto slash = devicePath.rfind('/');
        const std::string_view name = devicePath.substr(slash + 1);
        if (MatchesStepPattern(name, pciFunction)) {
            return std::string(name);
        }
        devicePath = devicePath.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
    return std::nullopt;
}

std::string ReadEntryPosition(const ISystemFiles& files, const std::string& entry) {
    const auto devicePath = FindEntryDevice(files, entry);
    const auto position = devicePath ? ReadDevicePosition(files, *devicePath) : std::nullopt;
    return position ? *position : entry.substr(entry.rfind('/') + 1);
}

}  // namespace NVORHOST
