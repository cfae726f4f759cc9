#include "vorhost/collect/usb_tree.h"

#include "vorhost/collect/device_position.h"
#include "vorhost/parse/numbers.h"

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

void AppendPorts(const ISystemFiles& files, const std::string& interface, std::vector<TUsbPort>& ports) {
    const std::string hub = HubOfInterface(interface);
    const std::string prefix = hub + "-port";
    for (const std::string& name : files.List(FolderOf(interface)).value) {
        if (!name.starts_with(prefix)) {
            continue;
        }
        TUsbPort port;
        port.hub = hub;
        port.folder = FolderOf(interface) + "/" + name;
        port.number = name.substr(prefix.size());
        const std::string path = FindDevicePath(files, interface);
        const std::string hubPosition = ReadDevicePosition(files, path + "/" + name);
        port.position = (hubPosition.empty() ? interface : hubPosition) + "/port" + port.number;
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
    std::vector<TUsbPort> ports;
    for (const std::string& name : files.List(devicesFolder).value) {
        if (name.find(':') != std::string::npos) {
            AppendPorts(files, name, ports);
        }
    }
    return ports;
}

}  // namespace NVORHOST
