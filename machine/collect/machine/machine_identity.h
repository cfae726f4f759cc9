// Manufacturer, product, serial number and UUID of the machine.
#pragma once

#include <optional>
#include <string>

namespace NVORHOST {

class TCollection;

/// Placeholders of the firmware count as absent.
struct TMachineIdentity {
    std::optional<std::string> manufacturer;
    std::optional<std::string> product;
    std::optional<std::string> serial;
    std::optional<std::string> uuid;  ///< canonical text, upper case
    /// Kind of machine: "Computer system, Tower"; "Virtual machine, KVM" even if the firmware reports a
    /// chassis.
    std::optional<std::string> description;
};

/// Reads the identity from these sources in order: SMBIOS table; the kernel's excerpt of it, which every user
/// may read; device tree; Xen; signature of the hypervisor; manufacturer of the ACPI tables; processor. It
/// stops at the first source that has a product; each member comes from the first source that has it.
/// `product` and `description` are always set.
TMachineIdentity ReadMachineIdentity(TCollection& collection);

}  // namespace NVORHOST
