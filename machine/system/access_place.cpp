#include "machine/system/access_place.h"

#include <algorithm>

namespace NVORHOST {

void TAccessPlace::EnterAccess(std::string_view path) {
    const std::size_t length = std::min(path.size(), path_.size());
    std::copy_n(path.data(), length, path_.data());
    length_.store(static_cast<std::uint32_t>(length), std::memory_order_release);
    Step();
}

std::optional<std::string> TAccessPlace::FindPath() const {
    const std::size_t length = length_.load(std::memory_order_acquire);
    return length == 0 ? std::nullopt : std::optional(std::string(path_.data(), length));
}

}  // namespace NVORHOST
