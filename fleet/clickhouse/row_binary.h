// RowBinary, the format of rows in which all values go to the server and come back: the bytes of each value,
// without names, separators or escapes.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// Appends values to a text of rows. The order of the calls is the order of the columns.
class TRowBinaryWriter {
  public:
    /// UInt8 to UInt64 and Int8 to Int64, little-endian as this machine's.
    template <std::integral T>
    TRowBinaryWriter& Number(T value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        bytes_.append(bytes, sizeof value);
        return *this;
    }
    /// FixedString(N): `value` has N bytes.
    TRowBinaryWriter& Fixed(std::string_view value) {
        bytes_.append(value);
        return *this;
    }
    /// String
    TRowBinaryWriter& Text(std::string_view value);
    /// The length of an Array; its elements follow.
    TRowBinaryWriter& Count(std::size_t value);

    /// All rows so far.
    const std::string& GetBytes() const { return bytes_; }
    bool IsEmpty() const { return bytes_.empty(); }
    void Clear() { bytes_.clear(); }

  private:
    std::string bytes_;
};

/// Takes values from the front of rows that may end early. After the first value that is not there in full,
/// IsComplete is false, and all values are zero or empty.
class TRowBinaryReader {
  public:
    explicit TRowBinaryReader(std::string_view bytes) : rest_(bytes) {}

    template <std::integral T>
    T Number() {
        T value = 0;
        const std::string_view bytes = Fixed(sizeof value);
        if (!bytes.empty()) {  // memcpy takes no null pointer, even for no bytes
            std::memcpy(&value, bytes.data(), bytes.size());
        }
        return value;
    }
    /// FixedString(size); the result refers to the rows.
    std::string_view Fixed(std::size_t size);
    /// String; the result refers to the rows.
    std::string_view Text() { return Fixed(Count()); }
    /// The length of an Array; never more than there are bytes left.
    std::size_t Count();

    bool IsComplete() const { return isComplete_; }
    std::string_view GetRest() const { return rest_; }

  private:
    std::size_t Fail();

    std::string_view rest_;
    bool isComplete_ = true;
};

}  // namespace NFLEET
