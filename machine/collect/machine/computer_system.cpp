// KELSG_ComputerSystem: one instance. ProductName, from which the machine type is derived, is always set:
// from the firmware, the device tree, the hypervisor's name or, as the last resort, the processor.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/operational_status.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/machine/machine_identity.h"
#include "machine/parse/smbios_system.h"

namespace NVORHOST {
namespace {

struct TComputerSystem {
    std::optional<std::string> elementName, description, name, manufacturer, productName, serialNumber;
    std::optional<TOperationalStatus> operationalStatus;
    std::optional<std::vector<std::uint16_t>> dedicated;
};

constexpr TPropertyRow<TComputerSystem> computerSystemRows[] = {
    {"ElementName", &TComputerSystem::elementName, "call uname nodename"},
    {"Description", &TComputerSystem::description,
     "type 3, 05h or /sys/class/dmi/id/chassis_type; /proc/cpuinfo flags; type 0, 13h bit 4; "
     "/sys/hypervisor/type"},
    {"OperationalStatus", &TComputerSystem::operationalStatus, "type 3, 09h; type 3, 0Ah; type 3, 0Bh"},
    {"PrimaryOwnerContact", TUnavailable{ECimType::eString}, "none: no source"},
    {"PrimaryOwnerName", TUnavailable{ECimType::eString}, "none: no source"},
    {"Dedicated", &TComputerSystem::dedicated, "constant"},
    {"Manufacturer", &TComputerSystem::manufacturer,
     "text type 1, 04h or /sys/class/dmi/id/sys_vendor; text type 2, 04h or /sys/class/dmi/id/board_vendor; "
     "/sys/firmware/acpi/tables/FACP OEMID"},
    {"ProductName", &TComputerSystem::productName,
     "text type 1, 05h or /sys/class/dmi/id/product_name; text type 2, 05h or /sys/class/dmi/id/board_name; "
     "/proc/device-tree/model; /proc/device-tree/compatible; /sys/firmware/acpi/tables/FACP OEM Table ID; "
     "/proc/cpuinfo model name"},
    {"SerialNumber", &TComputerSystem::serialNumber,
     "text type 1, 07h or /sys/class/dmi/id/product_serial; text type 3, 07h or "
     "/sys/class/dmi/id/chassis_serial; /proc/device-tree/serial-number"},
    {"Name", &TComputerSystem::name,
     "uuid type 1, 08h or /sys/class/dmi/id/product_uuid; /proc/device-tree/vm,uuid; uuid "
     "/sys/hypervisor/uuid"},
};

constexpr TCimClass<TComputerSystem> computerSystemClass{"KELSG_ComputerSystem", computerSystemRows};
constexpr const IClassDeclaration* classes[] = {&computerSystemClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 11>{
                                                        "/sys/class/dmi/id",
                                                        "/sys/class/dmi/id/*",
                                                        "/sys/devices/virtual/dmi/id",
                                                        "/sys/devices/virtual/dmi/id/*",
                                                        "/proc/device-tree",
                                                        "/proc/device-tree/*",
                                                        "/sys/hypervisor/type",
                                                        "/sys/hypervisor/uuid",
                                                        "/sys/hypervisor/properties/features",
                                                        "/sys/firmware/acpi/tables/FACP",
                                                        "/proc/cpuinfo",
                                                    });

std::optional<TOperationalStatus> ReadChassisStatus(TCollection& collection) {
    const TSmbiosStructure* structure = GetSmbios(collection).FindFirst(3);
    if (structure == nullptr) {
        return std::nullopt;
    }
    const TSmbiosChassis chassis = ParseSmbiosChassis(*structure);
    return FindChassisStatus({chassis.bootUpState, chassis.powerState, chassis.thermalState});
}

void CollectComputerSystem(TCollection& collection) {
    constexpr std::uint16_t notDedicated = 0;
    TMachineIdentity identity = ReadMachineIdentity(collection);
    TComputerSystem system;
    system.elementName = collection.GetCalls().ReadNodeName();
    if (!system.elementName) {
        system.elementName = identity.product;
    }
    system.description = std::move(identity.description);
    system.operationalStatus = ReadChassisStatus(collection);
    system.dedicated = {notDedicated};
    system.manufacturer = std::move(identity.manufacturer);
    system.productName = std::move(identity.product);
    system.serialNumber = std::move(identity.serial);
    system.name = std::move(identity.uuid);
    collection.Commit(computerSystemClass, system);
}

}  // namespace

extern constinit const TCollector computerSystemCollector{
    .name = "computer-system",
    .description = "The machine: maker, product, serial number, identity",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectComputerSystem,
};

}  // namespace NVORHOST
