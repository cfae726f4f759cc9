#include "vorhost/collect/usb_tree.h"

#include "vorhost/collect/attribute.h"
#include "vorhost/collect/device_position.h"
#include "vorhost/parse/numbers.h"

#include <set>
#include <string_view>

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

// The words for where a port is; `path` is that of the interface it belongs to.
std::string PositionOfPort(const ISystemFiles& files, const std::string& interface, const std::string& path,
                           const TUsbPort& port) {
    const std::string position = ReadDevicePosition(files, path + "/" + port.hub + "-port" + port.number);
    return (position.empty() ? interface : position) + "/port" + port.number;
}

void AppendPorts(const ISystemFiles& files, const std::string& interface, std::vector<TUsbPort>& ports) {
    const std::string hub = HubOfInterface(interface);
    const std::string prefix = hub + "-port";
    for (const std::string& name : files.List(FolderOf(interface)).value) {
        if (!name.starts_with(prefix)) {
            continue;
        }
        TUsbPort port{hub, FolderOf(interface) + "/" + name + "/device", name.substr(prefix.size()), {}};
        port.position = PositionOfPort(files, interface, FindDevicePath(files, interface), port);
        ports.push_back(std::move(port));
    }
}

// What a hub and the devices in its ports are called: the root hub usb1 has the interface 1-0:1.0 and the
// devices 1-1, 1-2; a hub 1-2 has the interface 1-2:1.0 and the devices 1-2.1, 1-2.2.
void AppendCountedPorts(const ISystemFiles& files, const std::string& hub, std::vector<TUsbPort>& ports) {
    const std::string bus = IsRootHub(hub) ? hub.substr(3) : "";
    const std::string interface = (bus.empty() ? hub : bus + "-0") + ":1.0";
    const std::string childPrefix = bus.empty() ? hub + "." : bus + "-";
    const auto count = ReadNumber<std::uint8_t>(files, FolderOf(hub) + "/maxchild").value_or(0);
    for (unsigned number = 1; number <= count; ++number) {
        TUsbPort port{hub, FolderOf(childPrefix + std::to_string(number)), std::to_string(number), {}};
        port.position = PositionOfPort(files, interface, FindDevicePath(files, hub) + "/" + interface, port);
        ports.push_back(std::move(port));
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
