#include "machine/collect/machine/hypervisor.h"

#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/logical_processors.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/smbios_system.h"
#include "text/find_row.h"

#include <cstdint>

namespace NVORHOST {
namespace {

constexpr std::string_view hypervisorType = "/sys/hypervisor/type";

constexpr THypervisor hypervisors[] = {
    {"KVMKVMKVM", "KVM", "KVM virtual machine", "kvm"},
    {"Linux KVM Hv", "KVM", "KVM virtual machine", "kvm"},
    {"Microsoft Hv", "Hyper-V", "Hyper-V virtual machine", "microsoft"},
    {"VMwareVMware", "VMware", "VMware virtual machine", "vmware"},
    {"XenVMMXenVMM", "Xen", "Xen virtual machine", "xen"},
    {"TCGTCGTCGTCG", "QEMU", "QEMU virtual machine", "qemu"},
    {"VBoxVBoxVBox", "VirtualBox", "VirtualBox virtual machine", "oracle"},
    {"bhyve bhyve ", "bhyve", "bhyve virtual machine", "bhyve"},
    {"BHyVE BHyVE ", "bhyve", "bhyve virtual machine", "bhyve"},
    {"prl hyperv  ", "Parallels", "Parallels virtual machine", "parallels"},
    {" lrpepyh vr", "Parallels", "Parallels virtual machine", "parallels"},
    {"ACRNACRNACRN", "ACRN", "ACRN virtual machine", "acrn"},
    {"QNXQVMBSQG", "QNX", "QNX virtual machine", "qnx"},
    {"OpenBSDVMM58", "OpenBSD", "OpenBSD virtual machine", "vm-other"},
    {"___ NVMM ___", "NVMM", "NVMM virtual machine", "vm-other"},
    {"Jailhouse", "Jailhouse", "Jailhouse cell", "vm-other"},
    {"HAXMHAXMHAXM", "HAXM", "HAXM virtual machine", "vm-other"},
    {"SRESRESRESRE", "LMHS", "LMHS virtual machine", "sre"},
    {"UnisysSpar64", "s-Par", "s-Par virtual machine", "vm-other"},
};

// Xen's control domain has direct access to the machine, although the processor reports a hypervisor.
bool IsControlDomain(const ISystemFiles& files) {
    constexpr std::uint32_t isControlDomain = 1U << 11U;
    const auto features = ReadHexNumber<std::uint32_t>(files, "/sys/hypervisor/properties/features");
    return features && (*features & isControlDomain) != 0;
}

bool IsVirtualByFirmware(const TSmbiosSource& smbios) {
    const TSmbiosStructure* structure = smbios.FindFirst(0);
    return structure != nullptr && ParseSmbiosFirmware(*structure).isVirtualMachine;
}

}  // namespace

const THypervisor* FindHypervisor(std::string_view signature) {
    return FindRow(hypervisors, &THypervisor::signature, signature);
}

bool IsXen(const ISystemFiles& files) {
    return ReadAttribute(files, hypervisorType) == "xen";
}

bool IsVirtual(TCollection& collection) {
    const ISystemFiles& files = collection.GetFiles();
    if (IsControlDomain(files)) {
        return false;
    }
    const auto& processors = GetLogicalProcessors(collection);
    return (!processors.empty() && processors.front().isUnderHypervisor) ||
           IsVirtualByFirmware(GetSmbios(collection)) || ReadAttribute(files, hypervisorType) ||
           collection.GetCalls().ReadHypervisorSignature();
}

std::optional<std::string_view> FindHypervisorName(TCollection& collection) {
    const auto signature = collection.GetCalls().ReadHypervisorSignature();
    const THypervisor* const hypervisor = signature ? FindHypervisor(*signature) : nullptr;
    if (hypervisor != nullptr) {
        return hypervisor->name;
    }
    return IsXen(collection.GetFiles()) ? std::optional<std::string_view>("Xen") : std::nullopt;
}

}  // namespace NVORHOST
