// Reads little-endian fields of a byte string that may be shorter than its layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace NVORHOST {

/// A non-owning view of bytes. Every getter returns nullopt for a field that is not entirely within the
/// bytes.
class TByteView {
  public:
    explicit TByteView(std::string_view bytes) : bytes_(bytes) {}

    std::size_t GetSize() const { return bytes_.size(); }
    std::string_view GetBytes() const { return bytes_; }

    std::optional<std::uint8_t> GetByte(std::size_t offset) const { return Get<std::uint8_t>(offset); }
    std::optional<std::uint16_t> GetWord(std::size_t offset) const { return Get<std::uint16_t>(offset); }
    std::optional<std::uint32_t> GetDword(std::size_t offset) const { return Get<std::uint32_t>(offset); }
    std::optional<std::uint64_t> GetQword(std::size_t offset) const { return Get<std::uint64_t>(offset); }

    std::optional<std::string_view> GetRange(std::size_t offset, std::size_t length) const {
        if (offset > bytes_.size() || length > bytes_.size() - offset) {
            return std::nullopt;
        }
        return bytes_.substr(offset, length);
    }

  private:
    template <typename T>
    std::optional<T> Get(std::size_t offset) const {
        const auto range = GetRange(offset, sizeof(T));
        if (!range) {
            return std::nullopt;
        }
        T value = 0;
        for (std::size_t i = sizeof(T); i-- > 0;) {
            value = static_cast<T>((std::uint64_t{value} << 8) | static_cast<std::uint8_t>((*range)[i]));
        }
        return value;
    }

    std::string_view bytes_;
};

}  // namespace NVORHOST
