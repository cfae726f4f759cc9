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

// FFh refers to the word, which version 3.0 added for more than 254 cores.
std::optional<std::uint16_t> ParseEnabledCores(const TByteView& fields) {
    constexpr std::uint8_t isInSecondField = 0xFF;
    const auto count = fields.GetByte(0x24);
    if (count == isInSecondField) {
        return NonZero(fields.GetWord(0x2C));
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
        .enabledCores = ParseEnabledCores(fields),
        .characteristics = fields.GetWord(0x26),
    };
}

}  // namespace NVORHOST
