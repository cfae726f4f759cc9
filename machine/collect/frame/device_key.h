// Keys of devices: a receiver recognises a device by its key from one inventory to the next. A key is made
// from the device's own identity, else from its position, and never from the order of discovery.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TKeySource {
    std::optional<std::string>
        identity;          ///< reported by the device itself, such as a serial number; never empty
    std::string position;  ///< where the device is
};

/// The longest value that a DeviceID may have, in bytes.
inline constexpr std::size_t maxKeyLength = 64;

/// Returns one key per source, in order: its identity; its position if it has no identity; both, joined by
/// "@", if other sources have the same identity (each such identity adds a line to `notes`). Equal sources
/// are numbered from the second on: "#2". A key longer than `maxKeyLength` is truncated and ends with a
/// digest of the whole key.
std::vector<std::string> MakeUniqueKeys(const std::vector<TKeySource>& sources, std::string_view deviceWord,
                                        std::vector<std::string>& notes);

}  // namespace NVORHOST
