// USB hubs and their ports in sysfs.
#pragma once

#include "machine/system/system_files.h"

#include <string>
#include <vector>

namespace NVORHOST {

/// A root hub: the hub that is part of a controller.
struct TUsbRootHub {
    std::string name;            ///< "usb1"
    std::string controllerPath;  ///< folder of the controller below /sys/devices
};

/// Returns the root hubs in the order of their names; empty for a tree without links in /sys/bus/usb/devices.
std::vector<TUsbRootHub> ReadUsbRootHubs(const ISystemFiles& files);

/// One port of a hub.
struct TUsbPort {
    std::string hub;       ///< name of the hub in /sys/bus/usb/devices: "usb1" or "1-2"
    std::string attached;  ///< path of the attached device; exists only if the port is in use
    std::string number;    ///< 1-based within the hub
    std::string position;  ///< position of the port, independent of bus numbers
};

/// Returns every port of every hub, empty ports included. On kernels without port folders (before 3.9), the
/// ports are counted by the hub's `maxchild`.
std::vector<TUsbPort> ReadUsbPorts(const ISystemFiles& files);

}  // namespace NVORHOST
