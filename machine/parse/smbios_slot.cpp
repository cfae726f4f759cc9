#include "machine/parse/smbios_slot.h"

#include "text/hex.h"

namespace NVORHOST {
namespace {

std::optional<std::string> ParseAddress(const TByteView& fields) {
    const auto segment = fields.GetWord(0x0D);
    const auto bus = fields.GetByte(0x0F);
    const auto deviceFunction = fields.GetByte(0x10);
    if (!segment || !bus || !deviceFunction) {
        return std::nullopt;
    }
    if (*segment == 0xFFFF && *bus == 0xFF && *deviceFunction == 0xFF) {
        return std::nullopt;
    }
    return ToHexDigits(*segment, 4) + ":" + ToHexDigits(*bus, 2) + ":" +
           ToHexDigits(*deviceFunction >> 3U, 2) + "." + ToHexDigits(*deviceFunction & 0x07U, 1);
}

std::optional<bool> ParseHotPlug(const TByteView& fields) {
    constexpr std::uint8_t isUnknown = 0x01;
    constexpr std::uint8_t isHotPlug = 0x02;
    const auto first = fields.GetByte(0x0B);
    const auto second = fields.GetByte(0x0C);
    if (!first || !second || (*first & isUnknown) != 0) {
        return std::nullopt;
    }
    return (*second & isHotPlug) != 0;
}

// Version 3.4 adds its fields after the peer groups, whose number is at 12h.
std::optional<std::uint8_t> ParsePhysicalWidth(const TByteView& fields) {
    constexpr std::size_t peerSize = 5;
    const auto peers = fields.GetByte(0x12);
    return peers ? fields.GetByte(0x14 + peerSize * *peers) : std::nullopt;
}

}  // namespace

TSmbiosSlot ParseSmbiosSlot(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    return {
        .designation = structure.GetText(0x04),
        .kind = fields.GetByte(0x05),
        .dataWidth = fields.GetByte(0x06),
        .usage = fields.GetByte(0x07),
        .number = fields.GetByte(0x09),
        .supportsHotPlug = ParseHotPlug(fields),
        .pciAddress = ParseAddress(fields),
        .physicalWidth = ParsePhysicalWidth(fields),
    };
}

}  // namespace NVORHOST
