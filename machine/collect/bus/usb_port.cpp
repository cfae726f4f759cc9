// KELSG_USBPort: one instance per port of every hub, root hubs and empty ports included.
#include "machine/collect/bus/usb_tree.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "text/find_row.h"

namespace NVORHOST {
namespace {

struct TPortRecord {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint64_t> speedBitsPerSecond, maxSpeedBitsPerSecond;
    TInstancePlace place{};
};

constexpr TPropertyRow<TPortRecord> portRows[] = {
    {"ElementName", &TPortRecord::elementName, "/sys/bus/usb/devices/*"},
    {"Description", &TPortRecord::description, "@/manufacturer; @/product; @/idVendor; @/idProduct"},
    {"DeviceID", &TPortRecord::deviceId, "/sys/bus/usb/devices/*"},
    {"OperationalStatus", TUnavailable{ECimType::eUint16, /*isArray=*/true},
     "none: not reported by the port"},
    {"MaxSpeed", &TPortRecord::maxSpeedBitsPerSecond, "/sys/bus/usb/devices/*/speed of the hub"},
    {"Speed", &TPortRecord::speedBitsPerSecond, "@/speed"},
};

constexpr TCimClass<TPortRecord> usbPortClass{"KELSG_USBPort", portRows};
constexpr const IClassDeclaration* classes[] = {&usbPortClass};

constexpr TSourcePattern sourcePatterns[] = {
    "/sys/bus/usb/devices",
    "/sys/bus/usb/devices/*",
    "/sys/bus/usb/devices/*/*",
    "/sys/bus/usb/devices/*/*/device",
    "/sys/bus/usb/devices/*/*/device/*",
    "/sys/devices/**",
};

// The kernel's texts for speeds in Mbit/s. "unknown" has no row.
struct TSpeedRow {
    std::string_view text;
    std::uint64_t bitsPerSecond;
};

constexpr TSpeedRow speedRows[] = {
    {"1.5", 1'500'000},        {"12", 12'000'000},        {"480", 480'000'000},
    {"5000", 5'000'000'000},   {"10000", 10'000'000'000}, {"20000", 20'000'000'000},
    {"40000", 40'000'000'000}, {"80000", 80'000'000'000},
};

std::optional<std::uint64_t> ReadSpeed(const ISystemFiles& files, const std::string& path) {
    const auto text = ReadAttribute(files, path);
    return text ? FindCell(speedRows, &TSpeedRow::text, *text, &TSpeedRow::bitsPerSecond) : std::nullopt;
}

TDeviceName FindInDatabase(TCollection& collection, const std::string& folder) {
    const ISystemFiles& files = collection.GetFiles();
    const IDeviceNames* names = collection.GetDeviceNames();
    const auto vendorId = ReadHexNumber<std::uint16_t>(files, folder + "/idVendor");
    const auto productId = ReadHexNumber<std::uint16_t>(files, folder + "/idProduct");
    return names != nullptr && vendorId && productId ? names->FindUsb(*vendorId, *productId) : TDeviceName{};
}

// Names the attached device by its own texts, with the database as fallback.
std::string NameAttached(TCollection& collection, const std::string& folder) {
    const ISystemFiles& files = collection.GetFiles();
    auto maker = ReadAttribute(files, folder + "/manufacturer");
    auto product = ReadAttribute(files, folder + "/product");
    if (!maker || !product) {
        TDeviceName found = FindInDatabase(collection, folder);
        if (!maker) {
            maker = std::move(found.vendor);
        }
        if (!product) {
            product = std::move(found.device);
        }
    }
    const bool productHasMaker = maker && product && product->starts_with(*maker + " ");
    std::string name = productHasMaker ? "" : maker.value_or("");
    name += (name.empty() || !product ? "" : " ") + product.value_or("");
    return name.empty() ? "a USB device" : name;
}

// Caches the speed of the last hub, as the ports of a hub follow one another.
class THubSpeed {
  public:
    std::optional<std::uint64_t> Read(const ISystemFiles& files, const std::string& hub) {
        if (hub != hub_) {
            speed_ = ReadSpeed(files, "/sys/bus/usb/devices/" + hub + "/speed");
            hub_ = hub;
        }
        return speed_;
    }

  private:
    std::string hub_;
    std::optional<std::uint64_t> speed_;
};

TPortRecord MakePort(TCollection& collection, const TUsbPort& port, THubSpeed& hubSpeed) {
    constexpr std::uint64_t nothingAttached = 0;
    const ISystemFiles& files = collection.GetFiles();
    TPortRecord record;
    record.place.folder = port.attached;
    record.elementName = "USB port " + port.number + " of " + port.hub;
    record.maxSpeedBitsPerSecond = hubSpeed.Read(files, port.hub);
    if (files.Exists(port.attached)) {
        record.speedBitsPerSecond = ReadSpeed(files, port.attached + "/speed");
        record.description = "USB port with " + NameAttached(collection, port.attached);
    } else {
        record.speedBitsPerSecond = nothingAttached;
        record.description = "USB port, empty";
    }
    return record;
}

void CollectUsbPorts(TCollection& collection) {
    std::vector<TKeyedRecord<TPortRecord>> records;
    THubSpeed hubSpeed;
    for (const TUsbPort& port : ReadUsbPorts(collection.GetFiles())) {
        records.push_back({MakePort(collection, port, hubSpeed), {std::nullopt, port.position}});
    }
    CommitKeyed(collection, usbPortClass, std::move(records), &TPortRecord::deviceId, "USB port");
}

}  // namespace

extern constinit const TCollector usbPortCollector{
    .name = "usb-port",
    .description = "Ports of the USB hubs",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectUsbPorts,
};

}  // namespace NVORHOST
