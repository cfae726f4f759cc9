// The NUMA nodes of the processors, /sys/devices/system/node.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace NVORHOST {

class TCollection;

/// The processors of each node, by node. A processor is in several nodes if the firmware's tables are wrong.
using TProcessorNodes = std::map<std::uint16_t, std::vector<std::uint32_t>>;

/// The nodes of the collection's machine, read at the first call; empty if the kernel has no NUMA support.
const TProcessorNodes& GetProcessorNodes(TCollection& collection);

/// Returns the nodes of `cpus`, ascending; nullopt if none of them is in a node. The kernel lists a processor
/// that is offline in no node.
std::optional<std::vector<std::uint16_t>> FindNodes(const TProcessorNodes& nodes,
                                                    const std::vector<std::uint32_t>& cpus);

}  // namespace NVORHOST
