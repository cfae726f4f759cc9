#include "machine/parse/pci_config.h"

#include "machine/parse/byte_view.h"
#include "text/find_row.h"

namespace NVORHOST {
namespace {

// The differences between the header types.
struct THeaderLayout {
    EPciHeader header;
    std::size_t baseAddressCount;
    std::size_t capabilityPointer;
};

constexpr THeaderLayout layouts[] = {
    {EPciHeader::device, 6, 0x34},
    {EPciHeader::bridge, 2, 0x34},
    {EPciHeader::cardBus, 1, 0x14},
};

const THeaderLayout* FindLayout(std::uint8_t headerRegister) {
    return FindRow(layouts, &THeaderLayout::header, static_cast<EPciHeader>(headerRegister & 0x7FU));
}

// Returns the offset of a capability; nullopt if the list ends, leaves the bytes or has a loop.
std::optional<std::size_t> FindCapability(const TByteView& config, std::size_t pointerOffset,
                                          std::uint8_t wantedId) {
    constexpr int mostCapabilities = (256 - 64) / 4;
    auto pointer = config.GetByte(pointerOffset);
    for (int step = 0; step < mostCapabilities && pointer; ++step) {
        const std::size_t offset = *pointer & 0xFCU;
        const auto id = config.GetByte(offset);
        if (offset < pciHeaderBytes || !id || *id == 0xFF) {
            return std::nullopt;
        }
        if (*id == wantedId) {
            return offset;
        }
        pointer = config.GetByte(offset + 1);
    }
    return std::nullopt;
}

void ReadDeviceRegisters(const TByteView& config, TPciConfig& result) {
    result.expansionRom = config.GetDword(0x30);
    result.minGrant = config.GetByte(0x3E);
    result.maxLatency = config.GetByte(0x3F);
    result.subsystemVendorId = config.GetWord(0x2C);
    result.subsystemId = config.GetWord(0x2E);
}

void ReadBusNumbers(const TByteView& config, TPciConfig& result) {
    result.primaryBus = config.GetByte(0x18);
    result.secondaryBus = config.GetByte(0x19);
    result.subordinateBus = config.GetByte(0x1A);
}

void ReadBridgeRegisters(const TByteView& config, TPciConfig& result) {
    ReadBusNumbers(config, result);
    result.expansionRom = config.GetDword(0x38);
    result.ioBase = config.GetByte(0x1C);
    result.ioLimit = config.GetByte(0x1D);
    result.memoryBase = config.GetWord(0x20);
    result.memoryLimit = config.GetWord(0x22);
}

void ReadCardBusRegisters(const TByteView& config, TPciConfig& result) {
    ReadBusNumbers(config, result);
    result.subsystemVendorId = config.GetWord(0x40);
    result.subsystemId = config.GetWord(0x42);
}

void ReadCommonRegisters(const TByteView& config, TPciConfig& result) {
    result.vendorId = *config.GetWord(0x00);
    result.deviceId = *config.GetWord(0x02);
    result.status = *config.GetWord(0x06);
    result.programmingInterface = *config.GetByte(0x09);
    result.subclass = *config.GetByte(0x0A);
    result.baseClass = *config.GetByte(0x0B);
    result.cacheLineSize = *config.GetByte(0x0C);
    result.latencyTimer = *config.GetByte(0x0D);
    result.selfTest = *config.GetByte(0x0F);
    result.interruptPin = *config.GetByte(0x3D);
}

std::optional<std::uint8_t> ReadExpressPortType(const TByteView& config, const THeaderLayout& layout) {
    constexpr std::uint8_t expressCapability = 0x10;
    const auto capability = FindCapability(config, layout.capabilityPointer, expressCapability);
    const auto flags = capability ? config.GetWord(*capability + 2) : std::nullopt;
    if (!flags) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>((*flags >> 4) & 0x0F);
}

// The header of a bridge has no subsystem registers, so bridges have a capability for them.
void ReadBridgeSubsystem(const TByteView& config, const THeaderLayout& layout, TPciConfig& result) {
    constexpr std::uint8_t subsystemCapability = 0x0D;
    if (const auto capability = FindCapability(config, layout.capabilityPointer, subsystemCapability)) {
        result.subsystemVendorId = config.GetWord(*capability + 4);
        result.subsystemId = config.GetWord(*capability + 6);
    }
}

}  // namespace

std::optional<TPciConfig> ParsePciConfig(std::string_view bytes) {
    const TByteView config(bytes);
    if (config.GetSize() < pciHeaderBytes || config.GetWord(0x00) == 0xFFFF) {
        return std::nullopt;
    }
    const THeaderLayout* layout = FindLayout(*config.GetByte(0x0E));
    if (layout == nullptr) {
        return std::nullopt;
    }
    TPciConfig result;
    result.header = layout->header;
    ReadCommonRegisters(config, result);
    for (std::size_t i = 0; i < layout->baseAddressCount; ++i) {
        result.baseAddresses.push_back(*config.GetDword(0x10 + 4 * i));
    }
    switch (layout->header) {
        case EPciHeader::device:
            ReadDeviceRegisters(config, result);
            break;
        case EPciHeader::bridge:
            ReadBridgeRegisters(config, result);
            break;
        case EPciHeader::cardBus:
            ReadCardBusRegisters(config, result);
            break;
    }
    if (result.HasCapabilities()) {
        result.expressPortType = ReadExpressPortType(config, *layout);
        if (layout->header == EPciHeader::bridge) {
            ReadBridgeSubsystem(config, *layout, result);
        }
    }
    return result;
}

}  // namespace NVORHOST
