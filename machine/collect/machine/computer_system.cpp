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
    {"ElementName", &TComputerSystem::elementName},
    {"Description", &TComputerSystem::description},
    {"OperationalStatus", &TComputerSystem::operationalStatus},
    {"PrimaryOwnerContact", TUnavailable{ECimType::eString}},
    {"PrimaryOwnerName", TUnavailable{ECimType::eString}},
    {"Dedicated", &TComputerSystem::dedicated},
    {"Manufacturer", &TComputerSystem::manufacturer},
    {"ProductName", &TComputerSystem::productName},
    {"SerialNumber", &TComputerSystem::serialNumber},
    {"Name", &TComputerSystem::name},
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
