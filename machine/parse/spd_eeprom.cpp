#include "machine/parse/spd_eeprom.h"

#include "machine/parse/byte_view.h"
#include "text/find_row.h"
#include "text/hex.h"
#include "text/trim.h"

#include <algorithm>

namespace NVORHOST {
namespace {

constexpr std::size_t serialSize = 4;

struct TSpdLayout {
    std::uint8_t kind;         // byte 2
    std::size_t yearOffset;    // the week is in the next byte; both are binary-coded decimals
    std::size_t serialOffset;  // 4 bytes
    std::size_t partOffset;
    std::size_t partSize;
};

constexpr TSpdLayout layouts[] = {
    {0x07, 93, 95, 73, 18},     // DDR
    {0x08, 93, 95, 73, 18},     // DDR2
    {0x09, 120, 122, 128, 18},  // DDR2 FB-DIMM
    {0x0B, 120, 122, 128, 18},  // DDR3
    {0x0C, 323, 325, 329, 20},  // DDR4
    {0x0E, 323, 325, 329, 20},  // DDR4E
    {0x0F, 323, 325, 329, 20},  // LPDDR3
    {0x10, 323, 325, 329, 20},  // LPDDR4
    {0x11, 323, 325, 329, 20},  // LPDDR4X
    {0x12, 515, 517, 521, 30},  // DDR5
    {0x13, 515, 517, 521, 30},  // LPDDR5
    {0x15, 515, 517, 521, 30},  // LPDDR5X
};

std::optional<std::string> FormatSerial(std::string_view bytes) {
    const auto isEach = [&](char filler) {
        return std::all_of(bytes.begin(), bytes.end(), [&](char c) { return c == filler; });
    };
    if (isEach('\0') || isEach('\xFF')) {
        return std::nullopt;
    }
    return ToHex(bytes, EHexCase::upper);
}

// Parts are padded with blanks, by some makers with NULs.
std::optional<std::string> FormatPart(std::string_view bytes) {
    const std::string_view text = TrimBlanks(bytes.substr(0, bytes.find('\0')));
    const bool isPrintable =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return text.empty() || !isPrintable ? std::nullopt : std::optional<std::string>(text);
}

std::optional<std::uint8_t> ParseDecimal(std::uint8_t coded) {
    const auto tens = static_cast<std::uint8_t>(coded >> 4);
    const auto ones = static_cast<std::uint8_t>(coded & 0x0F);
    return tens > 9 || ones > 9 ? std::nullopt : std::optional(static_cast<std::uint8_t>(tens * 10 + ones));
}

std::optional<TManufactureWeek> ParseWeek(std::uint8_t codedYear, std::uint8_t codedWeek) {
    constexpr std::uint8_t lastWeek = 53;
    const auto year = ParseDecimal(codedYear);
    const auto week = ParseDecimal(codedWeek);
    if (!year || !week || *week == 0 || *week > lastWeek) {
        return std::nullopt;
    }
    return TManufactureWeek{static_cast<std::uint16_t>(2000 + *year), *week};
}

std::optional<TSpdModule> ParseLayout(const TByteView& view, const TSpdLayout& layout) {
    const auto year = view.GetByte(layout.yearOffset);
    const auto week = view.GetByte(layout.yearOffset + 1);
    const auto serial = view.GetRange(layout.serialOffset, serialSize);
    const auto part = view.GetRange(layout.partOffset, layout.partSize);
    if (!year || !week || !serial || !part) {
        return std::nullopt;
    }
    return TSpdModule{FormatSerial(*serial), FormatPart(*part), ParseWeek(*year, *week)};
}

}  // namespace

std::optional<TSpdModule> ParseSpdEeprom(std::string_view bytes) {
    const TByteView view(bytes);
    const auto* const layout = FindRow(layouts, &TSpdLayout::kind, view.GetByte(2));
    return layout == nullptr ? std::nullopt : ParseLayout(view, *layout);
}

std::optional<std::size_t> FindSpdSerial(std::string_view bytes) {
    const TByteView view(bytes);
    const auto* const layout = FindRow(layouts, &TSpdLayout::kind, view.GetByte(2));
    if (layout == nullptr || !view.GetRange(layout->serialOffset, serialSize)) {
        return std::nullopt;
    }
    return layout->serialOffset;
}

}  // namespace NVORHOST
