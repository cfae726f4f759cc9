#include "machine/parse/smbios_cache.h"

#include <cstddef>

namespace NVORHOST {
namespace {

constexpr std::uint16_t extendedSize = 0xFFFF;
constexpr std::uint8_t unknownMode = 3;
constexpr std::uint64_t largeUnitKiB = 64;

// The highest bit selects units of 64 KiB instead of 1 KiB.
template <typename T>
std::uint64_t ToKiB(T field) {
    constexpr T granularity = T{1} << (sizeof(T) * 8 - 1);
    const std::uint64_t units = field & static_cast<T>(~granularity);
    return (field & granularity) != 0 ? units * largeUnitKiB : units;
}

// Returns the word, or the extended doubleword if it is present and the word refers to it.
std::optional<std::uint64_t> ReadSize(const TByteView& fields, std::size_t offset,
                                      std::size_t extendedOffset) {
    const auto word = fields.GetWord(offset);
    if (word != extendedSize) {
        return word ? std::optional(ToKiB(*word)) : std::nullopt;
    }
    const auto extended = fields.GetDword(extendedOffset);
    return extended ? std::optional(ToKiB(*extended)) : std::nullopt;
}

}  // namespace

TSmbiosCache ParseSmbiosCache(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    TSmbiosCache cache;
    cache.designation = structure.GetText(0x04);
    cache.maxSizeKiB = ReadSize(fields, 0x07, 0x13);
    cache.installedKiB = ReadSize(fields, 0x09, 0x17);
    cache.errorCorrection = fields.GetByte(0x10);
    cache.kind = fields.GetByte(0x11);
    cache.associativity = fields.GetByte(0x12);
    if (const auto configuration = fields.GetWord(0x05)) {
        cache.level = static_cast<std::uint8_t>((*configuration & 0x07) + 1);
        cache.isEnabled = (*configuration & 0x80) != 0;
        const auto mode = static_cast<std::uint8_t>(*configuration >> 8 & 0x03);
        cache.mode = mode == unknownMode ? std::nullopt : std::optional(mode);
    }
    return cache;
}

}  // namespace NVORHOST
