// Who made the machine and what it is called, from the first source that can tell.
#pragma once

#include "machine/parse/smbios_system.h"

#include <optional>
#include <string>

namespace NVORHOST {

class TCollection;

/// Placeholders of firmware count as absent.
struct TMachineIdentity {
    std::optional<std::string> manufacturer;
    std::string product;  ///< never empty
    std::optional<std::string> serial;
    std::optional<std::string> uuid;  ///< canonical text, upper case
    /// The kind of machine, never empty: "Computer system, Tower"; "Virtual machine, KVM" also where the
    /// firmware has a chassis.
    std::string description;
};

/// Sources, in this order: SMBIOS table, the kernel's excerpt of it (which every user may read), device tree,
/// Xen, the hypervisor's signature, the maker of the ACPI tables, the processor. The first that names the
/// product decides; sources asked before it keep what they knew beside.
TMachineIdentity ReadMachineIdentity(TCollection& collection);

}  // namespace NVORHOST
