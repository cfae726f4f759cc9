#include "machine/parse/smbios_memory.h"

namespace NVORHOST {
namespace {

constexpr std::uint64_t kibibyte = 1024;
constexpr std::uint64_t mebibyte = 1024 * kibibyte;
constexpr std::uint32_t extendedBits = 0x7FFFFFFF;  // bit 31 of the extended fields is reserved

template <typename T>
std::optional<T> Unless(std::optional<T> value, T unknown) {
    return value == unknown ? std::nullopt : value;
}

std::optional<std::uint64_t> ParseCapacity(const TByteView& fields) {
    constexpr std::uint16_t none = 0;
    constexpr std::uint16_t unknown = 0xFFFF;
    constexpr std::uint16_t isInExtendedField = 0x7FFF;
    constexpr std::uint16_t isInKibibytes = 0x8000;
    const auto size = fields.GetWord(0x0C);
    if (!size || *size == none || *size == unknown) {
        return std::nullopt;
    }
    if (*size == isInExtendedField) {
        // If the structure ends before the extended field, 7FFFh is the size itself: 32767 MiB.
        const std::uint64_t mebibytes = fields.GetDword(0x1C).value_or(*size) & extendedBits;
        return Unless(std::optional(mebibytes * mebibyte), std::uint64_t{0});
    }
    return (*size & isInKibibytes) != 0 ? (*size & 0x7FFFU) * kibibyte : *size * mebibyte;
}

// Returns the word at `offset`, or the double word at `extendedOffset` if the word refers to it.
std::optional<std::uint32_t> ParseSpeed(const TByteView& fields, std::size_t offset,
                                        std::size_t extendedOffset) {
    constexpr std::uint32_t unknown = 0;
    constexpr std::uint16_t isInExtendedField = 0xFFFF;
    const auto speed = fields.GetWord(offset);
    if (!speed) {
        return std::nullopt;
    }
    if (*speed != isInExtendedField) {
        return Unless(std::optional<std::uint32_t>(*speed), unknown);
    }
    const auto extended = fields.GetDword(extendedOffset);
    return extended ? Unless(std::optional(*extended & extendedBits), unknown) : std::nullopt;
}

std::optional<std::uint8_t> ParseRank(const TByteView& fields) {
    constexpr std::uint8_t rankBits = 0x0F;
    const auto attributes = fields.GetByte(0x1B);
    return attributes ? Unless(std::optional<std::uint8_t>(*attributes & rankBits), std::uint8_t{0})
                      : std::nullopt;
}

std::optional<std::uint64_t> ParseMaxCapacity(const TByteView& fields) {
    constexpr std::uint32_t isInExtendedField = 0x80000000;
    const auto kibibytes = fields.GetDword(0x07);
    if (!kibibytes) {
        return std::nullopt;
    }
    const auto bytes =
        *kibibytes == isInExtendedField ? fields.GetQword(0x0F) : std::optional(*kibibytes * kibibyte);
    return Unless(bytes, std::uint64_t{0});
}

// Start and end are extended together, never one of them alone.
std::optional<TAddressRange> ParseRange(const TByteView& fields) {
    constexpr std::uint32_t isInExtendedField = 0xFFFFFFFF;
    const auto start = fields.GetDword(0x04);
    const auto end = fields.GetDword(0x08);
    if (!start || !end) {
        return std::nullopt;
    }
    if (*start != isInExtendedField) {
        // The end field is the number of the last KiB.
        return TAddressRange{*start * kibibyte, *end * kibibyte + (kibibyte - 1)};
    }
    const auto extendedStart = fields.GetQword(0x0F);
    const auto extendedEnd = fields.GetQword(0x17);
    if (!extendedStart || !extendedEnd) {
        return std::nullopt;
    }
    return TAddressRange{*extendedStart, *extendedEnd};
}

bool IsMapped(const TAddressRange& range) {
    return range.last >= range.first && range.last >= kibibyte;
}

}  // namespace

TSmbiosMemoryArray ParseSmbiosMemoryArray(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    return {
        .handle = structure.GetHandle(),
        .location = fields.GetByte(0x04),
        .use = fields.GetByte(0x05),
        .errorCorrection = fields.GetByte(0x06),
        .maxCapacityBytes = ParseMaxCapacity(fields),
        .slotCount = fields.GetWord(0x0D),
    };
}

TSmbiosMemoryDevice ParseSmbiosMemoryDevice(const TSmbiosStructure& structure) {
    constexpr std::uint16_t unknownWidth = 0xFFFF;
    const TByteView& fields = structure.GetFields();
    return {
        .handle = structure.GetHandle(),
        .arrayHandle = fields.GetWord(0x04),
        .totalWidthBits = Unless(fields.GetWord(0x08), unknownWidth),
        .dataWidthBits = Unless(fields.GetWord(0x0A), unknownWidth),
        .isPopulated = fields.GetWord(0x0C).value_or(0) != 0,
        .capacityBytes = ParseCapacity(fields),
        .formFactor = fields.GetByte(0x0E),
        .locator = structure.GetText(0x10),
        .bank = structure.GetText(0x11),
        .kind = fields.GetByte(0x12),
        .detail = fields.GetWord(0x13),
        .speed = ParseSpeed(fields, 0x15, 0x54),
        .manufacturer = structure.GetText(0x17),
        .serial = structure.GetText(0x18),
        .part = structure.GetText(0x1A),
        .rank = ParseRank(fields),
        .configuredSpeed = ParseSpeed(fields, 0x20, 0x58),
        .configuredMillivolts = Unless(fields.GetWord(0x26), std::uint16_t{0}),
    };
}

TSmbiosArrayAddress ParseSmbiosArrayAddress(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    const auto range = ParseRange(fields);
    return {
        .arrayHandle = fields.GetWord(0x0C),
        .range = range && IsMapped(*range) ? range : std::nullopt,
    };
}

TSmbiosDeviceAddress ParseSmbiosDeviceAddress(const TSmbiosStructure& structure) {
    constexpr std::uint8_t reserved = 0;
    constexpr std::uint8_t unknown = 0xFF;
    const TByteView& fields = structure.GetFields();
    return {
        .deviceHandle = fields.GetWord(0x0C),
        .rowPosition = Unless(Unless(fields.GetByte(0x10), reserved), unknown),
        .interleavePosition = Unless(fields.GetByte(0x11), unknown),
    };
}

}  // namespace NVORHOST
