// The USB devices and hubs of the machine as sysfs shows them.
#pragma once

#include "machine/system/system_files.h"

#include <string>
#include <vector>

namespace NVORHOST {

/// A root hub: the hub that a controller is itself.
struct TUsbRootHub {
    std::string name;            ///< "usb1"
    std::string controllerPath;  ///< the controller's folder below /sys/devices
};

/// In the order of their names. A tree without links below /sys/bus/usb/devices has none.
std::vector<TUsbRootHub> ReadUsbRootHubs(const ISystemFiles& files);

/// One port of a hub.
struct TUsbPort {
    std::string hub;       ///< the hub's name below /sys/bus/usb/devices: "usb1" or "1-2"
    std::string attached;  ///< the folder of what is plugged in; not there when nothing is
    std::string number;    ///< within the hub, from "1"
    std::string position;  ///< where the port is, in words that do not change with bus numbers
};

/// Every port of every hub, empty ones too. Where the kernel shows no ports (before 3.9), a hub's own number
/// of them tells.
std::vector<TUsbPort> ReadUsbPorts(const ISystemFiles& files);

}  // namespace NVORHOST
