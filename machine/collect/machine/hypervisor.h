// The hypervisor that the machine runs under.
#pragma once

#include "machine/collect/frame/source_patterns.h"
#include "machine/system/system_files.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

class TCollection;

struct THypervisor {
    std::string_view signature;  ///< CPUID leaf 40000000h
    std::string_view name;
    std::string_view product;  ///< for machines without a name of their own: "KVM virtual machine"
    std::string_view word;     ///< as in systemd-detect-virt; "vm-other" without a word there
};

/// Returns the row of a signature; null for an unknown signature.
const THypervisor* FindHypervisor(std::string_view signature);

/// True on Xen, in its control domain too.
bool IsXen(const ISystemFiles& files);

/// True under a hypervisor, by the processor's flag, the firmware, Xen's files or the signature. False in
/// Xen's control domain, which has direct access to the machine.
bool IsVirtual(TCollection& collection);

/// Returns the name by the signature, or "Xen"; nullopt if it is unknown.
std::optional<std::string_view> FindHypervisorName(TCollection& collection);

/// The paths of these functions besides those of the SMBIOS table and /proc/cpuinfo.
inline constexpr std::array<TSourcePattern, 2> hypervisorSources{
    "/sys/hypervisor/type",
    "/sys/hypervisor/properties/features",
};

}  // namespace NVORHOST
