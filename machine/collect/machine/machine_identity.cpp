#include "machine/collect/machine/machine_identity.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/dmi_folder.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/machine/hypervisor.h"
#include "machine/parse/acpi_table.h"
#include "machine/parse/device_tree.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_system.h"
#include "text/ascii.h"
#include "text/trim.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace NVORHOST {
namespace {

void SetIfAbsent(std::optional<std::string>& member, std::optional<std::string> found) {
    if (!member) {
        member = std::move(found);
    }
}

void SetChassisKind(std::optional<std::uint8_t> kind, TMachineIdentity& identity) {
    if (const auto name = kind ? FindChassisKindName(*kind) : std::nullopt) {
        SetIfAbsent(identity.description, "Computer system, " + std::string(*name));
    }
}

std::optional<std::string> ReadUuid(const ISystemFiles& files, std::string_view path) {
    const auto uuid = ReadAttribute(files, path);
    return uuid && !IsPlaceholderUuid(*uuid) ? std::optional(ToUpperCase(*uuid)) : std::nullopt;
}

std::optional<std::string> ReadDmiUuid(const ISystemFiles& files) {
    const auto folder = FindDmiFolder(files);
    return folder ? ReadUuid(files, *folder + "/product_uuid") : std::nullopt;
}

// Returns nullopt if there are several chassis, such as a blade and its enclosure: neither is the machine's
// for sure.
std::optional<std::string> FindOnlyChassisSerial(const TSmbiosSource& smbios) {
    constexpr std::uint8_t chassisType = 3;
    const auto isChassis = [](const TSmbiosStructure& row) { return row.GetType() == chassisType; };
    if (std::ranges::count_if(smbios.GetStructures(), isChassis) != 1) {
        return std::nullopt;
    }
    return ParseSmbiosChassis(*smbios.FindFirst(chassisType)).serial;
}

void FillFromSmbios(TCollection& collection, TMachineIdentity& identity) {
    const TSmbiosSource& smbios = GetSmbios(collection);
    if (const TSmbiosStructure* structure = smbios.FindFirst(1)) {
        const TSmbiosSystem system = ParseSmbiosSystem(*structure, smbios.GetVersion());
        SetIfAbsent(identity.manufacturer, WithoutPlaceholder(system.manufacturer));
        SetIfAbsent(identity.product, WithoutPlaceholder(system.product));
        SetIfAbsent(identity.serial, WithoutPlaceholder(system.serial));
        // The byte order of the UUID depends on the version. If the version is unknown, use the kernel's
        // text.
        SetIfAbsent(identity.uuid, smbios.GetVersion() ? system.uuid : ReadDmiUuid(collection.GetFiles()));
    }
    SetIfAbsent(identity.serial, WithoutPlaceholder(FindOnlyChassisSerial(smbios)));
    // Self-built machines have no system names, so the names of the board are used.
    if (const TSmbiosStructure* structure = smbios.FindFirst(2)) {
        const TSmbiosBoard board = ParseSmbiosBoard(*structure);
        SetIfAbsent(identity.product, WithoutPlaceholder(board.product));
        SetIfAbsent(identity.manufacturer, WithoutPlaceholder(board.manufacturer));
    }
    if (const TSmbiosStructure* structure = smbios.FindFirst(3)) {
        SetChassisKind(ParseSmbiosChassis(*structure).kind, identity);
    }
}

void FillFromDmiClass(TCollection& collection, TMachineIdentity& identity) {
    const ISystemFiles& files = collection.GetFiles();
    const auto folder = FindDmiFolder(files);
    if (!folder) {
        return;
    }
    const auto read = [&](std::string_view name) {
        return WithoutPlaceholder(ReadAttribute(files, *folder + "/" + std::string(name)));
    };
    SetIfAbsent(identity.manufacturer, read("sys_vendor"));
    SetIfAbsent(identity.product, read("product_name"));
    SetIfAbsent(identity.serial, read("product_serial"));
    SetIfAbsent(identity.uuid, ReadDmiUuid(files));
    SetIfAbsent(identity.manufacturer, read("board_vendor"));
    SetIfAbsent(identity.product, read("board_name"));
    // If the table is readable, FillFromSmbios has already considered the chassis.
    if (GetSmbios(collection).GetStructures().empty()) {
        SetIfAbsent(identity.serial, read("chassis_serial"));
    }
    SetChassisKind(ReadNumber<std::uint8_t>(files, *folder + "/chassis_type"), identity);
}

void FillFromDeviceTree(TCollection& collection, TMachineIdentity& identity) {
    const ISystemFiles& files = collection.GetFiles();
    if (!files.Exists("/proc/device-tree")) {
        return;
    }
    const auto read = [&](std::string_view name) {
        const auto bytes = files.ReadText("/proc/device-tree/" + std::string(name));
        return WithoutPlaceholder(ParseDeviceTreeString(bytes.value));
    };
    SetIfAbsent(identity.product, read("model"));
    if (!identity.product) {
        identity.product = read("compatible");
    }
    SetIfAbsent(identity.serial, read("serial-number"));
    if (const auto uuid = read("vm,uuid"); uuid && !IsPlaceholderUuid(*uuid)) {
        SetIfAbsent(identity.uuid, ToUpperCase(*uuid));
    }
}

constexpr std::string_view virtualMachine = "Virtual machine";
constexpr std::size_t acpiHeaderBytes = 36;

void FillFromXen(TCollection& collection, TMachineIdentity& identity) {
    const ISystemFiles& files = collection.GetFiles();
    if (IsXen(files)) {
        SetIfAbsent(identity.product, "Xen virtual machine");
        SetIfAbsent(identity.uuid, ReadUuid(files, "/sys/hypervisor/uuid"));
    }
}

void FillFromHypervisor(TCollection& collection, TMachineIdentity& identity) {
    const auto signature = collection.GetCalls().ReadHypervisorSignature();
    if (signature) {
        const THypervisor* hypervisor = FindHypervisor(*signature);
        SetIfAbsent(identity.product,
                    std::string(hypervisor != nullptr ? hypervisor->product : virtualMachine));
    }
}

void FillFromAcpi(TCollection& collection, TMachineIdentity& identity) {
    // Every machine with ACPI has this table.
    const auto bytes = collection.GetFiles().ReadBytes("/sys/firmware/acpi/tables/FACP", acpiHeaderBytes);
    const auto origin = ParseAcpiTableOrigin(bytes.value);
    if (origin && !IsPlaceholder(origin->oemId) && !IsPlaceholder(origin->oemTableId)) {
        SetIfAbsent(identity.manufacturer, std::string(TrimBlanks(origin->oemId)));
        SetIfAbsent(identity.product, std::string(TrimBlanks(origin->oemTableId)));
    }
}

void FillFromProcessor(TCollection& collection, TMachineIdentity& identity) {
    const auto& processors = GetLogicalProcessors(collection);
    if (!processors.empty() && processors.front().model) {
        SetIfAbsent(identity.product, *processors.front().model + " computer");
    } else if (const auto architecture = collection.GetCalls().ReadArchitecture()) {
        SetIfAbsent(identity.product, *architecture + " computer");
    } else {
        SetIfAbsent(identity.product, "Computer");
    }
}

constexpr void (*identitySources[])(TCollection& collection, TMachineIdentity& identity) = {
    FillFromSmbios,     FillFromDmiClass, FillFromDeviceTree, FillFromXen,
    FillFromHypervisor, FillFromAcpi,     FillFromProcessor,
};

// Returns, for example, "Virtual machine, KVM".
std::string DescribeVirtualMachine(TCollection& collection) {
    const auto name = FindHypervisorName(collection);
    return std::string(virtualMachine) + (name ? ", " + std::string(*name) : "");
}

}  // namespace

TMachineIdentity ReadMachineIdentity(TCollection& collection) {
    TMachineIdentity identity;
    for (const auto fill : identitySources) {
        fill(collection, identity);
        if (identity.product) {
            break;
        }
    }
    if (IsVirtual(collection)) {
        identity.description = DescribeVirtualMachine(collection);
    }
    SetIfAbsent(identity.description, "Computer system");
    return identity;
}

}  // namespace NVORHOST
