// The memory devices of the SMBIOS table, which the modules and their slots share, and their keys.
#pragma once

#include "machine/collect/frame/device_key.h"
#include "machine/parse/smbios_memory.h"

#include <vector>

namespace NVORHOST {

inline constexpr std::string_view memoryModuleClassName = "KELSG_SPDData";

inline constexpr std::uint8_t memoryArrayType = 16;
inline constexpr std::uint8_t memoryDeviceType = 17;

/// Returns every memory device (type 17) in the order of the table, empty ones too.
std::vector<TSmbiosMemoryDevice> ReadMemorySockets(const std::vector<TSmbiosStructure>& structures);

/// Returns every memory array (type 16) in the order of the table.
std::vector<TSmbiosMemoryArray> ReadMemoryArrays(const std::vector<TSmbiosStructure>& structures);

/// Returns the key source of each socket: the locator, with the bank if several sockets have the same
/// locator.
std::vector<TKeySource> MakeSocketKeySources(const std::vector<TSmbiosMemoryDevice>& sockets);

}  // namespace NVORHOST
