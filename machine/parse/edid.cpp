#include "machine/parse/edid.h"

#include "machine/parse/byte_view.h"
#include "text/numbers.h"

#include <cstddef>
#include <numeric>

namespace NVORHOST {
namespace {

constexpr std::size_t blockSize = 128;
constexpr std::string_view header("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8);
constexpr std::size_t descriptorSize = 18;
constexpr std::size_t descriptorOffsets[] = {0x36, 0x48, 0x5A, 0x6C};
constexpr std::uint8_t serialTag = 0xFF;
constexpr std::uint8_t nameTag = 0xFC;
constexpr std::uint8_t modelYearFlag = 0xFF;
constexpr std::uint8_t lastWeek = 54;
constexpr std::uint16_t firstYear = 1990;
constexpr std::uint16_t millimetresPerCentimetre = 10;

// All bytes of a block add up to a multiple of 256.
bool HasChecksum(std::string_view block) {
    const auto sum = std::accumulate(block.begin(), block.end(), 0U, [](unsigned total, char byte) {
        return total + static_cast<std::uint8_t>(byte);
    });
    return sum % 256 == 0;
}

// Three letters of five bits each, big-endian, "A" is 1.
std::optional<std::string> ReadMaker(const TByteView& block) {
    const unsigned packed = unsigned{*block.GetByte(0x08)} << 8 | *block.GetByte(0x09);
    std::string maker;
    for (const unsigned shift : {10U, 5U, 0U}) {
        const unsigned letter = packed >> shift & 0x1F;
        if (letter < 1 || letter > 26) {
            return std::nullopt;
        }
        maker += static_cast<char>('A' + letter - 1);
    }
    return maker;
}

// A text ends at a line feed and is padded with blanks.
std::string_view ReadDescriptorText(std::string_view descriptor) {
    const std::string_view text = descriptor.substr(5);
    return TrimBlanks(text.substr(0, text.find('\n')));
}

// A display descriptor has no pixel clock, and its tag in byte 3.
bool HasTag(std::string_view descriptor, std::uint8_t tag) {
    return descriptor.starts_with(std::string_view("\0\0\0", 3)) &&
           static_cast<std::uint8_t>(descriptor[3]) == tag;
}

void ReadDescriptor(std::string_view descriptor, TEdid& edid) {
    const std::string_view text = ReadDescriptorText(descriptor);
    if (text.empty()) {
        return;
    }
    if (HasTag(descriptor, serialTag)) {
        edid.serialText = text;
    } else if (HasTag(descriptor, nameTag)) {
        edid.name = text;
    }
}

void ReadDate(const TByteView& block, TEdid& edid) {
    const std::uint8_t week = *block.GetByte(0x10);
    edid.isModelYear = week == modelYearFlag;
    if (week >= 1 && week <= lastWeek) {
        edid.week = week;
    }
    if (const std::uint8_t year = *block.GetByte(0x11); year != 0) {
        edid.year = static_cast<std::uint16_t>(firstYear + year);
    }
}

void SetSize(unsigned width, unsigned height, TEdid& edid) {
    if (width != 0 && height != 0) {
        edid.widthMillimetres = static_cast<std::uint16_t>(width);
        edid.heightMillimetres = static_cast<std::uint16_t>(height);
    }
}

// One of the two base sizes may be an aspect ratio, and then the other is 0.
void ReadSize(const TByteView& block, TEdid& edid) {
    SetSize(unsigned{*block.GetByte(0x15)} * millimetresPerCentimetre,
            unsigned{*block.GetByte(0x16)} * millimetresPerCentimetre, edid);
    const TByteView timing(*block.GetRange(descriptorOffsets[0], descriptorSize));
    if (*timing.GetWord(0) != 0) {
        const unsigned high = *timing.GetByte(14);
        SetSize(*timing.GetByte(12) | (high & 0xF0) << 4, *timing.GetByte(13) | (high & 0x0F) << 8, edid);
    }
}

}  // namespace

std::optional<TEdid> ParseEdid(std::string_view bytes) {
    const std::string_view block = bytes.substr(0, blockSize);
    if (block.size() < blockSize || !block.starts_with(header) || !HasChecksum(block)) {
        return std::nullopt;
    }
    const TByteView fields(block);
    auto maker = ReadMaker(fields);
    if (!maker) {
        return std::nullopt;
    }
    TEdid edid;
    edid.maker = std::move(*maker);
    edid.productCode = *fields.GetWord(0x0A);
    if (const std::uint32_t serial = *fields.GetDword(0x0C); serial != 0) {
        edid.serialNumber = serial;
    }
    ReadDate(fields, edid);
    ReadSize(fields, edid);
    for (const std::size_t offset : descriptorOffsets) {
        ReadDescriptor(block.substr(offset, descriptorSize), edid);
    }
    return edid;
}

std::optional<TEdidSerials> FindEdidSerials(std::string_view bytes) {
    const std::string_view block = bytes.substr(0, blockSize);
    if (block.size() < blockSize || !block.starts_with(header)) {
        return std::nullopt;
    }
    TEdidSerials serials{.number = {0x0C, sizeof(std::uint32_t)}, .texts = {}};
    for (const std::size_t offset : descriptorOffsets) {
        const std::string_view descriptor = block.substr(offset, descriptorSize);
        const std::string_view text = ReadDescriptorText(descriptor);
        if (HasTag(descriptor, serialTag) && !text.empty()) {
            serials.texts.push_back({static_cast<std::size_t>(text.data() - block.data()), text.size()});
        }
    }
    return serials;
}

}  // namespace NVORHOST
