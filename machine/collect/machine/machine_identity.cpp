#include "machine/collect/machine/machine_identity.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/dmi_folder.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/acpi_table.h"
#include "machine/parse/device_tree.h"
#include "machine/parse/placeholders.h"
#include "text/numbers.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {
namespace {

// What one source can tell; members it cannot are absent.
struct TIdentityParts {
    std::optional<std::string> manufacturer, product, serial, uuid, description;
};

// ---- firmware

struct TFirmwareTexts {
    std::optional<std::string> manufacturer, product, serial, uuid, boardManufacturer, boardProduct,
        chassisSerial;
    std::optional<std::uint8_t> chassisKind;
};

TIdentityParts FromFirmwareTexts(TFirmwareTexts texts) {
    TIdentityParts parts;
    parts.manufacturer = WithoutPlaceholder(std::move(texts.manufacturer));
    parts.product = WithoutPlaceholder(std::move(texts.product));
    parts.serial = WithoutPlaceholder(std::move(texts.serial));
    if (!parts.serial) {
        parts.serial = WithoutPlaceholder(std::move(texts.chassisSerial));
    }
    parts.uuid = std::move(texts.uuid);
    // Machines built from parts leave the system's names open and are known by their board's.
    if (!parts.product) {
        parts.product = WithoutPlaceholder(std::move(texts.boardProduct));
    }
    if (!parts.manufacturer) {
        parts.manufacturer = WithoutPlaceholder(std::move(texts.boardManufacturer));
    }
    const std::string_view kind =
        texts.chassisKind ? FindChassisKindName(*texts.chassisKind).value_or("") : "";
    if (!kind.empty()) {
        parts.description = "Computer system, " + std::string(kind);
    }
    return parts;
}

std::string ToUpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::optional<std::string> ReadUuid(const ISystemFiles& files, std::string_view path) {
    auto uuid = ReadAttribute(files, path);
    return uuid && !IsPlaceholderUuid(*uuid) ? std::optional(ToUpperCase(std::move(*uuid))) : std::nullopt;
}

std::optional<std::string> ReadDmiUuid(const ISystemFiles& files) {
    const std::string folder(FindDmiFolder(files));
    return folder.empty() ? std::nullopt : ReadUuid(files, folder + "/product_uuid");
}

// A blade's number and that of its enclosure differ: with several chassis none of them is the machine's.
std::optional<std::string> FindOnlyChassisSerial(const TSmbiosSource& smbios) {
    constexpr std::uint8_t chassisType = 3;
    const auto isChassis = [](const TSmbiosStructure& row) { return row.GetType() == chassisType; };
    if (std::ranges::count_if(smbios.GetStructures(), isChassis) != 1) {
        return std::nullopt;
    }
    return ParseSmbiosChassis(*smbios.FindFirst(chassisType)).serial;
}

TIdentityParts FromSmbios(TCollection& collection) {
    const TSmbiosSource& smbios = GetSmbios(collection);
    TFirmwareTexts texts;
    if (const TSmbiosStructure* structure = smbios.FindFirst(1)) {
        TSmbiosSystem system = ParseSmbiosSystem(*structure, smbios.GetVersion());
        texts.manufacturer = std::move(system.manufacturer);
        texts.product = std::move(system.product);
        texts.serial = std::move(system.serial);
        // The version decides the order of the UUID's bytes; without it only the kernel knows the order.
        texts.uuid = smbios.GetVersion() ? std::move(system.uuid) : ReadDmiUuid(collection.GetFiles());
    }
    if (const TSmbiosStructure* structure = smbios.FindFirst(2)) {
        TSmbiosBoard board = ParseSmbiosBoard(*structure);
        texts.boardManufacturer = std::move(board.manufacturer);
        texts.boardProduct = std::move(board.product);
    }
    if (const TSmbiosStructure* structure = smbios.FindFirst(3)) {
        texts.chassisKind = ParseSmbiosChassis(*structure).kind;
    }
    texts.chassisSerial = FindOnlyChassisSerial(smbios);
    return FromFirmwareTexts(std::move(texts));
}

TIdentityParts FromDmiClass(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const std::string folder(FindDmiFolder(files));
    if (folder.empty()) {
        return {};
    }
    const auto read = [&](std::string_view name) {
        return ReadAttribute(files, folder + "/" + std::string(name));
    };
    TFirmwareTexts texts;
    texts.manufacturer = read("sys_vendor");
    texts.product = read("product_name");
    texts.serial = read("product_serial");
    texts.uuid = ReadDmiUuid(files);
    texts.boardManufacturer = read("board_vendor");
    texts.boardProduct = read("board_name");
    // FromSmbios has read the table, which has the number of chassis.
    if (GetSmbios(collection).GetStructures().empty()) {
        texts.chassisSerial = read("chassis_serial");
    }
    texts.chassisKind = ReadNumber<std::uint8_t>(files, folder + "/chassis_type");
    return FromFirmwareTexts(std::move(texts));
}

// ---- machines without SMBIOS

TIdentityParts FromDeviceTree(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    if (!files.Exists("/proc/device-tree")) {
        return {};
    }
    const auto read = [&](std::string_view name) {
        const auto bytes = files.ReadText("/proc/device-tree/" + std::string(name));
        return WithoutPlaceholder(ParseDeviceTreeString(bytes.value));
    };
    TIdentityParts parts;
    parts.product = read("model");
    if (!parts.product) {
        parts.product = read("compatible");
    }
    parts.serial = read("serial-number");
    if (const auto uuid = read("vm,uuid"); uuid && !IsPlaceholderUuid(*uuid)) {
        parts.uuid = ToUpperCase(*uuid);
    }
    return parts;
}

constexpr std::string_view virtualMachine = "Virtual machine";
constexpr std::string_view hypervisorType = "/sys/hypervisor/type";

TIdentityParts FromXen(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    if (ReadAttribute(files, hypervisorType) != "xen") {
        return {};
    }
    TIdentityParts parts;
    parts.product = "Xen virtual machine";
    parts.uuid = ReadUuid(files, "/sys/hypervisor/uuid");
    return parts;
}

struct THypervisor {
    std::string_view signature;
    std::string_view name;
    std::string_view product;
};

// CPUID leaf 40000000h.
constexpr THypervisor hypervisors[] = {
    {"KVMKVMKVM", "KVM", "KVM virtual machine"},
    {"Linux KVM Hv", "KVM", "KVM virtual machine"},
    {"Microsoft Hv", "Hyper-V", "Hyper-V virtual machine"},
    {"VMwareVMware", "VMware", "VMware virtual machine"},
    {"XenVMMXenVMM", "Xen", "Xen virtual machine"},
    {"TCGTCGTCGTCG", "QEMU", "QEMU virtual machine"},
    {"VBoxVBoxVBox", "VirtualBox", "VirtualBox virtual machine"},
    {"bhyve bhyve ", "bhyve", "bhyve virtual machine"},
    {"BHyVE BHyVE ", "bhyve", "bhyve virtual machine"},
    {"prl hyperv  ", "Parallels", "Parallels virtual machine"},
    {" lrpepyh vr", "Parallels", "Parallels virtual machine"},
    {"ACRNACRNACRN", "ACRN", "ACRN virtual machine"},
    {"QNXQVMBSQG", "QNX", "QNX virtual machine"},
    {"OpenBSDVMM58", "OpenBSD", "OpenBSD virtual machine"},
    {"___ NVMM ___", "NVMM", "NVMM virtual machine"},
    {"Jailhouse", "Jailhouse", "Jailhouse cell"},
    {"HAXMHAXMHAXM", "HAXM", "HAXM virtual machine"},
    {"SRESRESRESRE", "LMHS", "LMHS virtual machine"},
    {"UnisysSpar64", "s-Par", "s-Par virtual machine"},
};

// Null for a signature that is not listed.
const THypervisor* FindHypervisor(std::string_view signature) {
    const auto* const row = std::ranges::find(hypervisors, signature, &THypervisor::signature);
    return row == std::end(hypervisors) ? nullptr : row;
}

TIdentityParts FromHypervisor(TCollection& collection) {
    const auto signature = collection.GetCalls().HypervisorSignature();
    if (!signature) {
        return {};
    }
    const THypervisor* hypervisor = FindHypervisor(*signature);
    TIdentityParts parts;
    parts.product = hypervisor != nullptr ? hypervisor->product : virtualMachine;
    return parts;
}

TIdentityParts FromAcpi(TCollection& collection) {
    // Every machine with ACPI has this table.
    const auto bytes = collection.GetFiles().ReadBytes("/sys/firmware/acpi/tables/FACP", 36);
    const auto origin = ParseAcpiTableOrigin(bytes.value);
    if (!origin || IsPlaceholder(origin->oemId) || IsPlaceholder(origin->oemTableId)) {
        return {};
    }
    TIdentityParts parts;
    parts.manufacturer = TrimBlanks(origin->oemId);
    parts.product = TrimBlanks(origin->oemTableId);
    return parts;
}

TIdentityParts FromProcessor(TCollection& collection) {
    TIdentityParts parts;
    const auto& processors = GetLogicalProcessors(collection);
    if (!processors.empty() && !processors.front().model.empty()) {
        parts.product = processors.front().model + " computer";
    } else if (const auto architecture = collection.GetCalls().Architecture()) {
        parts.product = *architecture + " computer";
    } else {
        parts.product = "Computer";
    }
    return parts;
}

constexpr TIdentityParts (*identitySources[])(TCollection& collection) = {
    FromSmbios, FromDmiClass, FromDeviceTree, FromXen, FromHypervisor, FromAcpi, FromProcessor,
};

// ---- virtual machines

// Xen's first domain runs on the machine itself and has the hypervisor's flags all the same.
bool IsControlDomain(const ISystemFiles& files) {
    constexpr std::uint32_t isControlDomain = 1U << 11U;
    const auto features = ReadHexNumber<std::uint32_t>(files, "/sys/hypervisor/properties/features");
    return features && (*features & isControlDomain) != 0;
}

bool IsVirtualByFirmware(const TSmbiosSource& smbios) {
    const TSmbiosStructure* structure = smbios.FindFirst(0);
    return structure != nullptr && ParseSmbiosFirmware(*structure).isVirtualMachine;
}

bool IsVirtual(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    if (IsControlDomain(files)) {
        return false;
    }
    const auto& processors = GetLogicalProcessors(collection);
    return (!processors.empty() && processors.front().isUnderHypervisor) ||
           IsVirtualByFirmware(GetSmbios(collection)) || ReadAttribute(files, hypervisorType) ||
           collection.GetCalls().HypervisorSignature();
}

// "Virtual machine, KVM".
std::string DescribeVirtualMachine(TCollection& collection) {
    std::string_view name;
    if (const auto signature = collection.GetCalls().HypervisorSignature()) {
        const THypervisor* hypervisor = FindHypervisor(*signature);
        name = hypervisor != nullptr ? hypervisor->name : "";
    }
    if (name.empty() && ReadAttribute(collection.GetFiles(), hypervisorType) == "xen") {
        name = "Xen";
    }
    return std::string(virtualMachine) + (name.empty() ? "" : ", " + std::string(name));
}

void FillIn(std::optional<std::string>& part, std::optional<std::string>&& found) {
    if (!part) {
        part = std::move(found);
    }
}

}  // namespace

TMachineIdentity ReadMachineIdentity(TCollection& collection) {
    TIdentityParts known;
    for (const auto source : identitySources) {
        if (known.product) {
            break;
        }
        TIdentityParts found = source(collection);
        FillIn(known.manufacturer, std::move(found.manufacturer));
        FillIn(known.product, std::move(found.product));
        FillIn(known.serial, std::move(found.serial));
        FillIn(known.uuid, std::move(found.uuid));
        FillIn(known.description, std::move(found.description));
    }
    return {std::move(known.manufacturer), std::move(*known.product), std::move(known.serial),
            std::move(known.uuid),
            IsVirtual(collection) ? DescribeVirtualMachine(collection)
                                  : known.description.value_or("Computer system")};
}

}  // namespace NVORHOST
