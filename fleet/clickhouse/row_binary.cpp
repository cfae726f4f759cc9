#include "fleet/clickhouse/row_binary.h"

namespace NFLEET {
namespace {

constexpr unsigned groupBits = 7;  // bits in each byte of a number of variable length
constexpr unsigned groupMask = 0x7F;
constexpr unsigned more = 0x80;
constexpr unsigned longestBits = 63;

}  // namespace

TRowBinaryWriter& TRowBinaryWriter::Count(std::size_t value) {
    for (; value > groupMask; value >>= groupBits) {
        bytes_.push_back(static_cast<char>((value & groupMask) | more));
    }
    bytes_.push_back(static_cast<char>(value));
    return *this;
}

TRowBinaryWriter& TRowBinaryWriter::Text(std::string_view value) {
    return Count(value.size()).Fixed(value);
}

std::size_t TRowBinaryReader::Fail() {
    isComplete_ = false;
    rest_ = {};
    return 0;
}

std::string_view TRowBinaryReader::Fixed(std::size_t size) {
    if (size > rest_.size()) {
        (void)Fail();
        return {};
    }
    const std::string_view value = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return value;
}

std::size_t TRowBinaryReader::Count() {
    std::size_t value = 0;
    for (unsigned shift = 0; shift < longestBits; shift += groupBits) {
        const auto group = Number<std::uint8_t>();
        value |= static_cast<std::size_t>(group & groupMask) << shift;
        if ((group & more) == 0) {
            return value > rest_.size() ? Fail() : value;
        }
    }
    return Fail();
}

}  // namespace NFLEET
