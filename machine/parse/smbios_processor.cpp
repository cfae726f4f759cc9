#include "machine/parse/smbios_processor.h"

namespace NVORHOST {
namespace {

std::optional<std::uint16_t> NonZero(std::optional<std::uint16_t> value) {
    return value == 0 ? std::nullopt : value;
}

std::optional<std::uint16_t> ParseFamily(const TByteView& fields) {
    constexpr std::uint8_t isInSecondField = 0xFE;
    const auto code = fields.GetByte(0x06);
    if (code == isInSecondField) {
        return NonZero(fields.GetWord(0x28));
    }
    if (!code || *code == 0 || *code == 0xFF) {
        return std::nullopt;
    }
    return std::uint16_t{*code};
}

// FFh refers to the word, which version 3.0 added for counts above 254.
std::optional<std::uint16_t> ParseCount(const TByteView& fields, std::size_t offset, std::size_t wordOffset) {
    constexpr std::uint8_t isInSecondField = 0xFF;
    const auto count = fields.GetByte(offset);
    if (count == isInSecondField) {
        return NonZero(fields.GetWord(wordOffset));
    }
    return NonZero(count ? std::optional<std::uint16_t>(*count) : std::nullopt);
}

}  // namespace

TSmbiosProcessor ParseSmbiosProcessor(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    return {
        .socket = structure.GetText(0x04),
        .kind = fields.GetByte(0x05),
        .family = ParseFamily(fields),
        .manufacturer = structure.GetText(0x07),
        .version = structure.GetText(0x10),
        .maxSpeedMHz = NonZero(fields.GetWord(0x14)),
        .currentSpeedMHz = NonZero(fields.GetWord(0x16)),
        .status = fields.GetByte(0x18),
        .upgrade = fields.GetByte(0x19),
        .serial = structure.GetText(0x20),
        .cores = ParseCount(fields, 0x23, 0x2A),
        .enabledCores = ParseCount(fields, 0x24, 0x2C),
        .threads = ParseCount(fields, 0x25, 0x2E),
        .characteristics = fields.GetWord(0x26),
        .socketKind = structure.GetText(0x32),
    };
}

}  // namespace NVORHOST
