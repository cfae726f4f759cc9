#include "machine/collect/machine/computer_system.h"

#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/operational_status.h"
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
    {"PrimaryOwnerContact", TNeverKnown{ECimType::eString}},
    {"PrimaryOwnerName", TNeverKnown{ECimType::eString}},
    {"Dedicated", &TComputerSystem::dedicated},
    {"Manufacturer", &TComputerSystem::manufacturer},
    {"ProductName", &TComputerSystem::productName},
    {"SerialNumber", &TComputerSystem::serialNumber},
    {"Name", &TComputerSystem::name},
};

constexpr TClassShape classes[] = {
    MakeShape<TComputerSystem, computerSystemRows>("KELSG_ComputerSystem"),
};

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
    const TSmbiosStructure* structure = collection.GetSmbios().FindFirst(3);
    if (structure == nullptr) {
        return std::nullopt;
    }
    const TSmbiosChassis chassis = ParseSmbiosChassis(*structure);
    return FindChassisStatus({chassis.bootUpState, chassis.powerState, chassis.thermalState});
}

}  // namespace

std::span<const TClassShape> GetComputerSystemClasses() {
    return classes;
}

std::span<const TSourcePattern> GetComputerSystemSources() {
    return sourcePatterns;
}

void CollectComputerSystem(TCollection& collection) {
    constexpr std::uint16_t notDedicated = 0;
    TMachineIdentity identity = ReadMachineIdentity(collection);
    TComputerSystem system;
    system.elementName = collection.GetCalls().NodeName().value_or(identity.product);
    system.description = std::move(identity.description);
    system.operationalStatus = ReadChassisStatus(collection);
    system.dedicated = {notDedicated};
    system.manufacturer = std::move(identity.manufacturer);
    system.productName = std::move(identity.product);
    system.serialNumber = std::move(identity.serial);
    system.name = std::move(identity.uuid);
    collection.Commit<TComputerSystem>(classes[0], computerSystemRows, system);
}

}  // namespace NVORHOST
