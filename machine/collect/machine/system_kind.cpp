// CIM_ComputerSystem: one instance, the kind of system: bare metal, virtual machine, container, and the cloud
// that it runs in. The rules are those that systemd-detect-virt documents.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/dmi_folder.h"
#include "machine/collect/frame/identifying_info.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/machine/hypervisor.h"
#include "machine/parse/placeholders.h"
#include "text/find_row.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

struct TSystem {
    std::optional<std::string> elementName, description, name, kind;
    std::optional<std::vector<std::string>> identities, identityDescriptions;
};

constexpr TPropertyRow<TSystem> systemRows[] = {
    {"ElementName", &TSystem::elementName, "call uname nodename"},
    {"Description", &TSystem::description, "property VirtualSystem"},
    {"Name", &TSystem::name, "call uname nodename"},
    {"VirtualSystem", &TSystem::kind,
     "/sys/class/dmi/id/product_name; /sys/class/dmi/id/sys_vendor; /sys/class/dmi/id/board_vendor; "
     "/sys/class/dmi/id/bios_vendor; call cpuid 40000000h; /sys/hypervisor/type; /proc/vz; "
     "/run/host/container-manager; /run/systemd/container; /run/.containerenv; /.dockerenv"},
    {"OtherIdentifyingInfo", &TSystem::identities,
     "/sys/class/dmi/id/sys_vendor; /sys/class/dmi/id/product_name; /sys/class/dmi/id/chassis_asset_tag; "
     "property VirtualSystem"},
    {"IdentifyingDescriptions", &TSystem::identityDescriptions, "property OtherIdentifyingInfo"},
};

constexpr TCimClass<TSystem> systemClass{"CIM_ComputerSystem", systemRows};
constexpr const IClassDeclaration* classes[] = {&systemClass};

constexpr auto ownSources = std::array<TSourcePattern, 11>{
    "/proc/cpuinfo",
    "/proc/vz",
    "/proc/bc",
    "/run/host/container-manager",
    "/run/systemd/container",
    "/run/.containerenv",
    "/.dockerenv",
    "/sys/class/dmi/id",
    "/sys/class/dmi/id/*",
    "/sys/devices/virtual/dmi/id",
    "/sys/devices/virtual/dmi/id/*",
};
constexpr auto sourcePatterns = Join(Join(smbiosSources, hypervisorSources), ownSources);

class TFirmwareTexts {
  public:
    explicit TFirmwareTexts(const ISystemFiles& files) : files_(files), folder_(FindDmiFolder(files)) {}

    bool Exist() const { return folder_.has_value(); }
    std::optional<std::string> Find(std::string_view name) const {
        return folder_ ? WithoutPlaceholder(ReadAttribute(files_, *folder_ + "/" + std::string(name)))
                       : std::nullopt;
    }

  private:
    const ISystemFiles& files_;
    std::optional<std::string> folder_;
};

struct TVirtualMachine {
    std::string_view name;
    std::string_view word;  // word that systemd-detect-virt prints
};

struct TFirmwareName {
    std::string_view start;  // first characters of a firmware text
    TVirtualMachine machine;
    bool isBeforeSignature;  // true if it counts more than the signature of the hypervisor
    bool isEnough;           // false if bare machines have the same text
};

constexpr TFirmwareName firmwareNames[] = {
    {"KVM", {"KVM", "kvm"}, false, true},
    {"OpenStack", {"KVM", "kvm"}, false, false},
    {"KubeVirt", {"KVM", "kvm"}, false, true},
    {"Amazon EC2", {"Amazon EC2", "amazon"}, true, false},
    {"QEMU", {"QEMU", "qemu"}, false, true},
    {"VMware", {"VMware", "vmware"}, false, true},
    {"VMW", {"VMware", "vmware"}, false, true},
    {"innotek GmbH", {"VirtualBox", "oracle"}, true, true},
    {"VirtualBox", {"VirtualBox", "oracle"}, true, true},
    {"Xen", {"Xen", "xen"}, true, false},
    {"Bochs", {"Bochs", "bochs"}, false, true},
    {"Parallels", {"Parallels", "parallels"}, true, true},
    {"BHYVE", {"bhyve", "bhyve"}, false, true},
    {"Hyper-V", {"Hyper-V", "microsoft"}, false, true},
    {"Apple Virtualization", {"Apple Virtualization", "apple"}, false, true},
    {"Google Compute Engine", {"Google Compute Engine", "google"}, true, false},
};

// The first text that starts with a name counts.
const TFirmwareName* FindFirmwareName(const TFirmwareTexts& texts) {
    constexpr std::string_view fields[] = {"product_name", "sys_vendor", "board_vendor", "bios_vendor",
                                           "product_version"};
    for (const std::string_view field : fields) {
        const auto text = texts.Find(field);
        const auto* const row = std::ranges::find_if(
            firmwareNames, [&](const TFirmwareName& name) { return text && text->starts_with(name.start); });
        if (row != std::end(firmwareNames)) {
            return row;
        }
    }
    return nullptr;
}

std::optional<TVirtualMachine> FindVirtualMachine(TCollection& collection, bool isVirtual,
                                                  const TFirmwareTexts& texts) {
    const TFirmwareName* const found = FindFirmwareName(texts);
    if (!isVirtual) {
        return found != nullptr && found->isEnough ? std::optional(found->machine) : std::nullopt;
    }
    if (found != nullptr && found->isBeforeSignature) {
        return found->machine;
    }
    const auto signature = collection.GetCalls().ReadHypervisorSignature();
    if (const auto* const row = signature ? FindHypervisor(*signature) : nullptr) {
        return TVirtualMachine{row->name, row->word};
    }
    if (IsXen(collection.GetFiles())) {
        return TVirtualMachine{"Xen", "xen"};
    }
    return found != nullptr ? found->machine : TVirtualMachine{"", "vm-other"};
}

constexpr std::string_view containers[] = {
    "systemd-nspawn", "lxc-libvirt", "lxc", "docker", "podman", "rkt", "wsl", "proot", "pouch"};

// Container managers that leave no word leave these files.
std::optional<std::string> FindContainerByFile(const ISystemFiles& files) {
    if (files.Exists("/run/.containerenv")) {
        return "podman";
    }
    return files.Exists("/.dockerenv") ? std::optional<std::string>("docker") : std::nullopt;
}

// The environment of the first process, which has the word too, is not read: it holds secrets of the
// container.
std::optional<std::string> FindContainer(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    if (files.Exists("/proc/vz") && !files.Exists("/proc/bc")) {
        return "openvz";
    }
    const std::string release = collection.GetCalls().ReadKernelRelease().value_or("");
    if (release.find("Microsoft") != std::string::npos || release.find("WSL") != std::string::npos) {
        return "wsl";
    }
    auto word = ReadAttribute(files, "/run/host/container-manager");
    if (!word) {
        word = ReadAttribute(files, "/run/systemd/container");
    }
    if (!word || word == "oci") {
        const auto byFile = FindContainerByFile(files);
        return byFile || !word ? byFile : std::optional<std::string>("container-other");
    }
    const bool isKnown = std::ranges::find(containers, *word) != std::end(containers);
    return isKnown ? word : std::optional<std::string>("container-other");
}

struct TCloud {
    std::string_view field;  // name of a firmware text
    std::string_view text;
    std::string_view name;
    std::string_view kindField;  // the instance type; empty without one
    std::string_view idField;    // the instance id; empty without one
    std::string_view idStart;
};

constexpr TCloud clouds[] = {
    {"sys_vendor", "Amazon EC2", "Amazon EC2", "product_name", "board_asset_tag", "i-"},
    {"product_name", "Google Compute Engine", "Google Compute Engine", "", "", ""},
    {"chassis_asset_tag", "7783-7084-3265-9085-8269-3286-77", "Microsoft Azure", "", "", ""},
    {"chassis_asset_tag", "OracleCloud.com", "Oracle Cloud", "", "", ""},
    {"product_name", "Alibaba Cloud ECS", "Alibaba Cloud", "", "", ""},
    {"product_name", "OpenStack Nova", "OpenStack", "", "product_uuid", ""},
    {"product_name", "OpenStack Compute", "OpenStack", "", "product_uuid", ""},
    {"sys_vendor", "DigitalOcean", "DigitalOcean", "", "product_serial", ""},
    {"sys_vendor", "Hetzner", "Hetzner Cloud", "", "product_serial", ""},
    {"sys_vendor", "Vultr", "Vultr", "", "product_serial", ""},
    {"sys_vendor", "UpCloud", "UpCloud", "", "product_serial", ""},
    {"sys_vendor", "Scaleway", "Scaleway", "", "", ""},
};

const TCloud* FindCloud(const TFirmwareTexts& texts) {
    const auto* const row = std::ranges::find_if(
        clouds, [&](const TCloud& cloud) { return texts.Find(cloud.field) == cloud.text; });
    return row != std::end(clouds) ? row : nullptr;
}

void AddCloud(const TFirmwareTexts& texts, TIdentifyingInfo& info) {
    const TCloud* const cloud = FindCloud(texts);
    if (cloud == nullptr) {
        return;
    }
    info.Add("Cloud", std::string(cloud->name));
    if (!cloud->kindField.empty()) {
        info.Add("Instance type", texts.Find(cloud->kindField));
    }
    if (!cloud->idField.empty()) {
        const auto id = texts.Find(cloud->idField);
        info.Add("Instance ID", id && id->starts_with(cloud->idStart) ? id : std::nullopt);
    }
}

// "Container, docker, in a virtual machine, KVM".
std::string Describe(const std::optional<std::string>& container,
                     const std::optional<TVirtualMachine>& machine) {
    const std::string name =
        machine ? "irtual machine" + (machine->name.empty() ? "" : ", " + std::string(machine->name)) : "";
    if (container) {
        return "Container, " + *container + (machine ? ", in a v" + name : "");
    }
    return machine ? "V" + name : "Bare metal";
}

// Only x86 processors show whether there is a hypervisor. On others, only the firmware's texts can name it.
bool IsKindKnown(TCollection& collection, const TFirmwareTexts& texts) {
    const auto& processors = GetLogicalProcessors(collection);
    return texts.Exist() || (!processors.empty() && processors.front().isLongModeCapable.has_value());
}

void CollectSystemKind(TCollection& collection) {
    const bool isVirtual = IsVirtual(collection);
    const TFirmwareTexts texts(collection.GetFiles());
    const auto container = FindContainer(collection);
    const auto machine = FindVirtualMachine(collection, isVirtual, texts);
    if (!container && !machine && !IsKindKnown(collection, texts)) {
        return;
    }
    TSystem system;
    system.name = collection.GetCalls().ReadNodeName().value_or("computer");
    system.elementName = system.name;
    system.description = Describe(container, machine);
    system.kind = container ? *container : std::string(machine ? machine->word : "none");
    TIdentifyingInfo info;
    info.Add("Hypervisor",
             machine && !machine->name.empty() ? std::optional<std::string>(machine->name) : std::nullopt);
    info.Add("Container", container);
    AddCloud(texts, info);
    system.identities = std::move(info.values);
    system.identityDescriptions = std::move(info.descriptions);
    collection.Commit(systemClass, system);
}

}  // namespace

extern constinit const TCollector systemKindCollector{
    .name = "system-kind",
    .description = "Bare metal, virtual machine or container, and the cloud",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectSystemKind,
    .isForDocuments = false,
};

}  // namespace NVORHOST
