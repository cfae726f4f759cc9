#include "machine/collect/bus/pci_class_name.h"

namespace NVORHOST {
namespace {

struct TBaseClassRow {
    std::uint8_t baseClass;
    std::string_view name;
};

constexpr TBaseClassRow baseClassRows[] = {
    {0x00, "Unclassified device"},
    {0x01, "Mass storage controller"},
    {0x02, "Network controller"},
    {0x03, "Display controller"},
    {0x04, "Multimedia controller"},
    {0x05, "Memory controller"},
    {0x06, "Bridge"},
    {0x07, "Communication controller"},
    {0x08, "System peripheral"},
    {0x09, "Input device controller"},
    {0x0A, "Docking station"},
    {0x0B, "Processor"},
    {0x0C, "Serial bus controller"},
    {0x0D, "Wireless controller"},
    {0x0E, "Intelligent controller"},
    {0x0F, "Satellite communications controller"},
    {0x10, "Encryption controller"},
    {0x11, "Signal processing controller"},
    {0x12, "Processing accelerator"},
    {0x13, "Non-essential instrumentation"},
    {0x40, "Coprocessor"},
};

struct TSubclassRow {
    std::uint8_t baseClass;
    std::uint8_t subclass;
    std::string_view name;
};

constexpr TSubclassRow subclassRows[] = {
    {0x00, 0x01, "VGA compatible unclassified device"},
    {0x01, 0x00, "SCSI storage controller"},
    {0x01, 0x01, "IDE interface"},
    {0x01, 0x02, "Floppy disk controller"},
    {0x01, 0x03, "IPI bus controller"},
    {0x01, 0x04, "RAID bus controller"},
    {0x01, 0x05, "ATA controller"},
    {0x01, 0x06, "SATA controller"},
    {0x01, 0x07, "Serial Attached SCSI controller"},
    {0x01, 0x08, "Non-Volatile memory controller"},
    {0x01, 0x09, "Universal Flash Storage controller"},
    {0x02, 0x00, "Ethernet controller"},
    {0x02, 0x01, "Token ring network controller"},
    {0x02, 0x02, "FDDI network controller"},
    {0x02, 0x03, "ATM network controller"},
    {0x02, 0x04, "ISDN controller"},
    {0x02, 0x05, "WorldFip controller"},
    {0x02, 0x06, "PICMG controller"},
    {0x02, 0x07, "Infiniband controller"},
    {0x02, 0x08, "Fabric controller"},
    {0x03, 0x00, "VGA compatible controller"},
    {0x03, 0x01, "XGA compatible controller"},
    {0x03, 0x02, "3D controller"},
    {0x04, 0x00, "Multimedia video controller"},
    {0x04, 0x01, "Multimedia audio controller"},
    {0x04, 0x02, "Computer telephony device"},
    {0x04, 0x03, "Audio device"},
    {0x05, 0x00, "RAM memory"},
    {0x05, 0x01, "FLASH memory"},
    {0x05, 0x02, "CXL memory"},
    {0x06, 0x00, "Host bridge"},
    {0x06, 0x01, "ISA bridge"},
    {0x06, 0x02, "EISA bridge"},
    {0x06, 0x03, "MicroChannel bridge"},
    {0x06, 0x04, "PCI bridge"},
    {0x06, 0x05, "PCMCIA bridge"},
    {0x06, 0x06, "NuBus bridge"},
    {0x06, 0x07, "CardBus bridge"},
    {0x06, 0x08, "RACEway bridge"},
    {0x06, 0x09, "Semi-transparent PCI-to-PCI bridge"},
    {0x06, 0x0A, "InfiniBand to PCI host bridge"},
    {0x07, 0x00, "Serial controller"},
    {0x07, 0x01, "Parallel controller"},
    {0x07, 0x02, "Multiport serial controller"},
    {0x07, 0x03, "Modem"},
    {0x07, 0x04, "GPIB controller"},
    {0x07, 0x05, "Smart Card controller"},
    {0x08, 0x00, "Programmable interrupt controller"},
    {0x08, 0x01, "DMA controller"},
    {0x08, 0x02, "Timer"},
    {0x08, 0x03, "Real-time clock"},
    {0x08, 0x04, "PCI hot-plug controller"},
    {0x08, 0x05, "SD host controller"},
    {0x08, 0x06, "IOMMU"},
    {0x09, 0x00, "Keyboard controller"},
    {0x09, 0x01, "Digitizer pen"},
    {0x09, 0x02, "Mouse controller"},
    {0x09, 0x03, "Scanner controller"},
    {0x09, 0x04, "Gameport controller"},
    {0x0A, 0x00, "Generic docking station"},
    {0x0B, 0x40, "Coprocessor"},
    {0x0C, 0x00, "FireWire (IEEE 1394) controller"},
    {0x0C, 0x01, "ACCESS bus controller"},
    {0x0C, 0x02, "SSA controller"},
    {0x0C, 0x03, "USB controller"},
    {0x0C, 0x04, "Fibre Channel controller"},
    {0x0C, 0x05, "SMBus controller"},
    {0x0C, 0x06, "InfiniBand controller"},
    {0x0C, 0x07, "IPMI interface"},
    {0x0C, 0x08, "SERCOS interface"},
    {0x0C, 0x09, "CANBUS controller"},
    {0x0D, 0x00, "IRDA controller"},
    {0x0D, 0x01, "Consumer IR controller"},
    {0x0D, 0x10, "RF controller"},
    {0x0D, 0x11, "Bluetooth controller"},
    {0x0D, 0x12, "Broadband controller"},
    {0x0D, 0x20, "802.11a wireless controller"},
    {0x0D, 0x21, "802.11b wireless controller"},
    {0x0E, 0x00, "I2O controller"},
    {0x0F, 0x01, "Satellite TV controller"},
    {0x0F, 0x02, "Satellite audio communication controller"},
    {0x0F, 0x03, "Satellite voice communication controller"},
    {0x0F, 0x04, "Satellite data communication controller"},
    {0x10, 0x00, "Network and computing encryption device"},
    {0x10, 0x10, "Entertainment encryption device"},
    {0x11, 0x00, "DPIO module"},
    {0x11, 0x01, "Performance counters"},
    {0x11, 0x10, "Communication synchronizer"},
    {0x11, 0x20, "Signal processing management device"},
};

}  // namespace

std::string_view GetPciClassName(std::uint8_t baseClass, std::uint8_t subclass) {
    for (const TSubclassRow& row : subclassRows) {
        if (row.baseClass == baseClass && row.subclass == subclass) {
            return row.name;
        }
    }
    for (const TBaseClassRow& row : baseClassRows) {
        if (row.baseClass == baseClass) {
            return row.name;
        }
    }
    return "PCI device";
}

}  // namespace NVORHOST
