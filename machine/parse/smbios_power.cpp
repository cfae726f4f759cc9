#include "machine/parse/smbios_power.h"

#include "text/hex.h"

namespace NVORHOST {
namespace {

constexpr std::uint16_t unknownPower = 0x8000;

// The number at 10h counts only if there is no text.
std::optional<std::string> ReadBatterySerial(const TSmbiosStructure& structure) {
    if (auto text = structure.GetText(0x07)) {
        return text;
    }
    const auto number = structure.GetFields().GetWord(0x10);
    return number && *number != 0 ? std::optional(ToHexDigits(*number, 4, EHexCase::upper)) : std::nullopt;
}

// Before the multiplier was added in version 2.2 the capacity is in milliwatt-hours.
std::optional<std::uint32_t> ReadCapacity(const TByteView& fields) {
    const auto capacity = fields.GetWord(0x0A);
    if (!capacity || *capacity == 0) {
        return std::nullopt;
    }
    const std::uint32_t multiplier = fields.GetByte(0x15).value_or(1);
    return *capacity * (multiplier == 0 ? 1 : multiplier);
}

}  // namespace

TSmbiosBattery ParseSmbiosBattery(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    const auto voltage = fields.GetWord(0x0C);
    return {
        .location = structure.GetText(0x04),
        .manufacturer = structure.GetText(0x05),
        .serial = ReadBatterySerial(structure),
        .name = structure.GetText(0x08),
        .chemistry = fields.GetByte(0x09),
        .designCapacityMilliwattHours = ReadCapacity(fields),
        .designVoltageMillivolts = voltage && *voltage != 0 ? voltage : std::nullopt,
    };
}

TSmbiosPowerSupply ParseSmbiosPowerSupply(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    const auto power = fields.GetWord(0x0C);
    TSmbiosPowerSupply supply;
    supply.location = structure.GetText(0x05);
    supply.name = structure.GetText(0x06);
    supply.manufacturer = structure.GetText(0x07);
    supply.serial = structure.GetText(0x08);
    supply.assetTag = structure.GetText(0x09);
    supply.partNumber = structure.GetText(0x0A);
    supply.revision = structure.GetText(0x0B);
    supply.maxPowerWatts = power && *power != unknownPower ? power : std::nullopt;
    if (const auto characteristics = fields.GetWord(0x0E)) {
        supply.isHotReplaceable = (*characteristics & 0x01) != 0;
        supply.isPresent = (*characteristics & 0x02) != 0;
        supply.isUnplugged = (*characteristics & 0x04) != 0;
        supply.status = static_cast<std::uint8_t>(*characteristics >> 7 & 0x07);
        supply.kind = static_cast<std::uint8_t>(*characteristics >> 10 & 0x0F);
    }
    return supply;
}

}  // namespace NVORHOST
