#include "machine/collect/bus/usb_tree.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/device_position.h"
#include "text/numbers.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

constexpr std::string_view devicesFolder = "/sys/bus/usb/devices";

std::string FolderOf(std::string_view name) {
    return std::string(devicesFolder) + "/" + std::string(name);
}

// Below /sys/devices; empty when the entry is no link.
std::string FindDevicePath(const ISystemFiles& files, const std::string& name) {
    const auto link = files.ReadLink(FolderOf(name));
    return link.IsOk() ? ResolveLinkText(FolderOf(name), link.value) : std::string();
}

bool IsRootHub(std::string_view name) {
    return name.starts_with("usb") && ParseNumber<unsigned>(name.substr(3)).has_value();
}

bool IsInterface(std::string_view name) {
    return name.find(':') != std::string_view::npos;
}

// The hub of an interface: "1-0:1.0" is that of the root hub usb1, "1-2.3:1.0" that of the device 1-2.3.
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

// What is said of a hub once for all of its ports.
struct THub {
    std::string name;
    std::string position;  // in the words for where its ports are, without the port
};

// `path` is that of the interface that the ports belong to; a port would be a folder within it.
THub FindHub(const ISystemFiles& files, std::string name, const std::string& interface,
             const std::string& path) {
    std::string position = ReadDevicePosition(files, path + "/port");
    return {std::move(name), position.empty() ? interface : std::move(position)};
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

// What a hub and the devices in its ports are called: the root hub usb1 has the interface 1-0:1.0 and the
// devices 1-1, 1-2; a hub 1-2 has the interface 1-2:1.0 and the devices 1-2.1, 1-2.2.
void AppendCountedPorts(const ISystemFiles& files, const std::string& name, std::vector<TUsbPort>& ports) {
    const auto count = ReadNumber<std::uint8_t>(files, FolderOf(name) + "/maxchild").value_or(0);
    if (count == 0) {
        return;
    }
    const std::string bus = IsRootHub(name) ? name.substr(3) : "";
    const std::string interface = (bus.empty() ? name : bus + "-0") + ":1.0";
    const std::string childPrefix = bus.empty() ? name + "." : bus + "-";
    const THub hub = FindHub(files, name, interface, FindDevicePath(files, name) + "/" + interface);
    for (unsigned i = 1; i <= count; ++i) {
        const std::string number = std::to_string(i);
        ports.push_back(MakePort(hub, number, FolderOf(childPrefix + number)));
    }
}

}  // namespace

std::vector<TUsbRootHub> ReadUsbRootHubs(const ISystemFiles& files) {
    std::vector<TUsbRootHub> hubs;
    for (const std::string& name : files.List(devicesFolder).value) {
        if (!IsRootHub(name)) {
            continue;
        }
        if (const std::string path = FindDevicePath(files, name); !path.empty()) {
            hubs.push_back({name, ParentOf(path)});
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
