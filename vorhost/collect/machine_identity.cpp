#include "vorhost/collect/machine_identity.h"

#include "vorhost/collect/attribute.h"
#include "vorhost/collect/collection.h"
#include "vorhost/parse/acpi_table.h"
#include "vorhost/parse/device_tree.h"
#include "vorhost/parse/placeholders.h"

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
    std::optional<std::string> manufacturer, product, serial, uuid, boardManufacturer, boardProduct;
    std::optional<std::uint8_t> chassisKind;
};

TIdentityParts FromFirmwareTexts(TFirmwareTexts texts) {
    TIdentityParts parts;
    parts.manufacturer = WithoutPlaceholder(std::move(texts.manufacturer));
    parts.product = WithoutPlaceholder(std::move(texts.product));
    parts.serial = WithoutPlaceholder(std::move(texts.serial));
    parts.uuid = std::move(texts.uuid);
    // Machines built from parts leave the system's names open and are known by their board's.
    if (!parts.product) {
        parts.product = WithoutPlaceholder(std::move(texts.boardProduct));
    }
    if (!parts.manufacturer) {
        parts.manufacturer = WithoutPlaceholder(std::move(texts.boardManufacturer));
    }
    const std::string_view kind = texts.chassisKind ? GetChassisKindName(*texts.chassisKind) : "";
    if (!kind.empty()) {
        parts.description = "Computer system, " + std::string(kind);
    }
    return parts;
}

TIdentityParts FromSmbios(TCollection& collection) {
    const TSmbiosSource& smbios = collection.GetSmbios();
    TFirmwareTexts texts;
    if (const TSmbiosStructure* structure = smbios.FindFirst(1)) {
        TSmbiosSystem system = ParseSmbiosSystem(*structure, smbios.GetVersion());
        texts.manufacturer = std::move(system.manufacturer);
        texts.product = std::move(system.product);
        texts.serial = std::move(system.serial);
        texts.uuid = std::move(system.uuid);
    }
    if (const TSmbiosStructure* structure = smbios.FindFirst(2)) {
        TSmbiosBoard board = ParseSmbiosBoard(*structure);
        texts.boardManufacturer = std::move(board.manufacturer);
        texts.boardProduct = std::move(board.product);
    }
    if (const TSmbiosStructure* structure = smbios.FindFirst(3)) {
        texts.chassisKind = ParseSmbiosChassis(*structure).kind;
    }
    return FromFirmwareTexts(std::move(texts));
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

TIdentityParts FromDmiClass(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    const auto read = [&](std::string_view name) {
        return ReadAttribute(files, "/sys/class/dmi/id/" + std::string(name));
    };
    if (!files.Exists("/sys/class/dmi/id")) {
        return {};
    }
    TFirmwareTexts texts;
    texts.manufacturer = read("sys_vendor");
    texts.product = read("product_name");
    texts.serial = read("product_serial");
    texts.uuid = ReadUuid(files, "/sys/class/dmi/id/product_uuid");
    texts.boardManufacturer = read("board_vendor");
    texts.boardProduct = read("board_name");
    texts.chassisKind = ReadNumber<std::uint8_t>(files, "/sys/class/dmi/id/chassis_type");
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

TIdentityParts FromXen(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    if (ReadAttribute(files, "/sys/hypervisor/type") != "xen") {
        return {};
    }
    TIdentityParts parts;
    parts.product = "Xen virtual machine";
    parts.uuid = ReadUuid(files, "/sys/hypervisor/uuid");
    parts.description = virtualMachine;
    return parts;
}

struct THypervisor {
    std::string_view signature;
    std::string_view product;
};

// CPUID leaf 40000000h.
constexpr THypervisor hypervisors[] = {
    {"KVMKVMKVM", "KVM virtual machine"},           {"Linux KVM Hv", "KVM virtual machine"},
    {"Microsoft Hv", "Hyper-V virtual machine"},    {"VMwareVMware", "VMware virtual machine"},
    {"XenVMMXenVMM", "Xen virtual machine"},        {"TCGTCGTCGTCG", "QEMU virtual machine"},
    {"VBoxVBoxVBox", "VirtualBox virtual machine"}, {"bhyve bhyve ", "bhyve virtual machine"},
    {"BHyVE BHyVE ", "bhyve virtual machine"},      {"prl hyperv  ", "Parallels virtual machine"},
    {" lrpepyh vr", "Parallels virtual machine"},   {"ACRNACRNACRN", "ACRN virtual machine"},
    {"QNXQVMBSQG", "QNX virtual machine"},          {"OpenBSDVMM58", "OpenBSD virtual machine"},
    {"___ NVMM ___", "NVMM virtual machine"},       {"Jailhouse", "Jailhouse cell"},
    {"HAXMHAXMHAXM", "HAXM virtual machine"},       {"SRESRESRESRE", "LMHS virtual machine"},
    {"UnisysSpar64", "s-Par virtual machine"},
};

TIdentityParts FromHypervisor(TCollection& collection) {
    const auto signature = collection.GetCalls().HypervisorSignature();
    if (!signature) {
        return {};
    }
    TIdentityParts parts;
    parts.product = virtualMachine;  // under a hypervisor that nobody has listed yet
    parts.description = virtualMachine;
    for (const THypervisor& row : hypervisors) {
        if (row.signature == *signature) {
            parts.product = row.product;
        }
    }
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
    const auto& processors = collection.GetLogicalProcessors();
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
            std::move(known.uuid), known.description.value_or("Computer system")};
}

}  // namespace NVORHOST
