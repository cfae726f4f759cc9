// Keys of devices: what a receiver knows a device by from one inventory to the next. They come from what the
// device says of itself, else from where it sits, and never from the order in which the kernel found it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// What a key is made from.
struct TKeySource {
    std::string identity;  ///< what the device says of itself; empty when it says nothing
    std::string position;  ///< where it sits
};

/// The longest value a DeviceID may have.
inline constexpr std::size_t maxKeyLength = 64;

/// One key for each source, in order: its identity; its position where that is empty; both, joined by "@",
/// for every source whose identity another one has as well (each such identity gives a line in `notes`).
/// Equal sources get a number at the end, from the second on. A key longer than `maxKeyLength` is cut and
/// ends with a digest of the whole.
std::vector<std::string> MakeUniqueKeys(const std::vector<TKeySource>& sources, std::string_view deviceWord,
                                        std::vector<std::string>& notes);

}  // namespace NVORHOST
