// The buses of a machine as trees, as far as addresses and bus numbers show them.
#pragma once

#include "inventory/report/report_inventory.h"

#include <string>
#include <vector>

namespace NINVENTORY {

/// A device and what is connected through it.
struct TDeviceNode {
    const TResource* device = nullptr;  ///< null for a run of empty ports, or a bus without a known bridge
    std::string text;                   ///< describes a node without a device
    std::vector<TDeviceNode> children;
};

/// Returns PCI functions below the bridge that leads to their bus. Functions on a bus that no bridge leads to
/// are at the top.
std::vector<TDeviceNode> MakePciTree(const TReportInventory& inventory);

/// Returns USB ports below the port that their hub is connected to, and these below their controller.
/// Neighbouring empty ports are one node.
std::vector<TDeviceNode> MakeUsbTree(const TReportInventory& inventory);

}  // namespace NINVENTORY
