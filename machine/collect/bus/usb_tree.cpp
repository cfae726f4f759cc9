#include "machine/collect/bus/usb_tree.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/device_position.h"
#include "machine/collect/frame/kernel_name.h"
#include "os/path_walk.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

constexpr std::string_view devicesFolder = "/sys/bus/usb/devices";
constexpr std::string_view rootHubPrefix = "usb";

std::string FolderOf(std::string_view name) {
    return std::string(devicesFolder) + "/" + std::string(name);
}

// Returns the path of the entry below /sys/devices; nullopt if the entry is not a link.
std::optional<std::string> FindDevicePath(const ISystemFiles& files, const std::string& name) {
    const auto link = files.ReadLink(FolderOf(name));
    return link.IsOk() ? std::optional(ResolveLinkText(FolderOf(name), link.value)) : std::nullopt;
}

bool IsRootHub(std::string_view name) {
    return FindNumberAfter(name, rootHubPrefix).has_value();
}

bool IsInterface(std::string_view name) {
    return name.find(':') != std::string_view::npos;
}

// Returns the name of the hub that an interface belongs to: "usb1" for "1-0:1.0", "1-2.3" for "1-2.3:1.0".
std::string HubOfInterface(std::string_view interface) {
    const std::string_view device = interface.substr(0, interface.find(':'));
    constexpr std::string_view rootSuffix = "-0";
    if (device.ends_with(rootSuffix)) {
        return "usb" + std::string(device.substr(0, device.size() - rootSuffix.size()));
    }
    return std::string(device);
}

std::string ParentOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

// The attributes that all ports of a hub share.
struct THub {
    std::string name;
    std::string position;  // prefix of the positions of its ports
};

// `path` is the folder of `interface`, which contains the ports. The position of a path does not depend on
// its last name, so that any name serves for the port.
THub FindHub(const ISystemFiles& files, std::string name, const std::string& interface,
             const std::optional<std::string>& path) {
    const auto position = path ? ReadDevicePosition(files, *path + "/port") : std::nullopt;
    return {std::move(name), position.value_or(interface)};
}

TUsbPort MakePort(const THub& hub, std::string_view number, std::string attached) {
    return {hub.name, std::move(attached), std::string(number), hub.position + "/port" + std::string(number)};
}

void AppendPorts(const ISystemFiles& files, const std::string& interface, std::vector<TUsbPort>& ports) {
    const std::string prefix = HubOfInterface(interface) + "-port";
    std::optional<THub> hub;
    for (const std::string& name : files.List(FolderOf(interface)).value) {
        if (!name.starts_with(prefix)) {
            continue;
        }
        if (!hub) {
            hub = FindHub(files, HubOfInterface(interface), interface, FindDevicePath(files, interface));
        }
        const std::string_view number = std::string_view(name).substr(prefix.size());
        ports.push_back(MakePort(*hub, number, FolderOf(interface) + "/" + name + "/device"));
    }
}

// Names of a hub's interface and of the devices in its ports: the root hub usb1 has the interface 1-0:1.0 and
// the devices 1-1 and 1-2; the hub 1-2 has the interface 1-2:1.0 and the devices 1-2.1 and 1-2.2.
void AppendCountedPorts(const ISystemFiles& files, const std::string& name, std::vector<TUsbPort>& ports) {
    const auto count = ReadNumber<std::uint8_t>(files, FolderOf(name) + "/maxchild").value_or(0);
    if (count == 0) {
        return;
    }
    const std::string bus = IsRootHub(name) ? name.substr(rootHubPrefix.size()) : "";
    const std::string interface = (bus.empty() ? name : bus + "-0") + ":1.0";
    const std::string childPrefix = bus.empty() ? name + "." : bus + "-";
    auto path = FindDevicePath(files, name);
    if (path) {
        *path += "/" + interface;
    }
    const THub hub = FindHub(files, name, interface, path);
    for (unsigned i = 1; i <= count; ++i) {
        const std::string number = std::to_string(i);
        ports.push_back(MakePort(hub, number, FolderOf(childPrefix + number)));
    }
}

}  // namespace

std::vector<TUsbRootHub> ReadUsbRootHubs(const ISystemFiles& files) {
    std::vector<TUsbRootHub> hubs;
    for (const std::string& name : ListNumbered(files, devicesFolder, rootHubPrefix)) {
        if (const auto path = FindDevicePath(files, name)) {
            hubs.push_back({name, ParentOf(*path)});
        }
    }
    return hubs;
}

std::vector<TUsbPort> ReadUsbPorts(const ISystemFiles& files) {
    const std::vector<std::string> names = files.List(devicesFolder).value;
    std::vector<TUsbPort> ports;
    for (const std::string& name : names) {
        if (IsInterface(name)) {
            AppendPorts(files, name, ports);
        }
    }
    std::set<std::string, std::less<>> shown;
    for (const TUsbPort& port : ports) {
        shown.insert(port.hub);
    }
    for (const std::string& name : names) {
        if (!IsInterface(name) && !shown.contains(name)) {
            AppendCountedPorts(files, name, ports);
        }
    }
    return ports;
}

}  // namespace NVORHOST
