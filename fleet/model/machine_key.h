// Who a machine is: the rules by which an inventory belongs to one.
#pragma once

#include "fleet/model/rows.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// What an inventory, or several of one moment, contain about the machine's identity; empty if unknown.
struct TMachineTraits {
    TMachineFacts facts;
    std::string address;   ///< the smallest permanent hardware address, without separators
    std::string system;    ///< "MANUFACTURER,TYPE-MODEL-SERIAL", the name in system information
    std::string pathPart;  ///< the folder in the path that names the machine
};

/// The key of a machine and the rule that gave it.
struct TMachineKey {
    EMachineRule rule = EMachineRule::path;
    std::string key;

    TMachineId GetId() const { return MakeDigest(key); }
    bool operator==(const TMachineKey&) const = default;
};

/// A rule with its description for people.
struct TMachineRule {
    EMachineRule rule;
    std::string_view description;
    /// Returns the key; nullopt if the traits lack what the rule needs.
    std::optional<std::string> (*makeKey)(const TMachineTraits& traits);
};

/// Returns the rules; the first one that gives a key counts.
std::span<const TMachineRule> GetMachineRules();

/// Returns the key of a machine; that of an empty path if nothing is known.
TMachineKey MakeMachineKey(const TMachineTraits& traits);

/// A text under which an inventory finds its machine: a key, or what an inventory of the same machine with
/// fewer properties has instead of one.
struct TMachineName {
    EMachineRule rule = EMachineRule::path;
    std::string text;

    TDigest GetDigest() const { return MakeDigest(text); }
    bool operator==(const TMachineName&) const = default;
};

/// Returns the names of an inventory's machine, the most certain one first. The key is among them.
std::vector<TMachineName> ListMachineNames(const TMachineTraits& traits);

/// True if an inventory that found `machine` under `name` belongs to it: nothing that both contain differs.
/// A path, an address or a host name connects only an inventory that names its machine and one that does not,
/// with the same vendor, model and host name.
bool IsOfMachine(const TMachineTraits& traits, const TMachineName& name, const TMachine& machine);

/// True if the key of an inventory is more certain than that of its machine, which it then replaces.
bool IsBetterKey(const TMachineKey& key, const TMachine& machine);

/// True for a system UUID that identifies a machine: 32 hexadecimal digits in groups of 8-4-4-4-12 that are
/// not one that many boards share.
bool IsRealUuid(std::string_view uuid);

}  // namespace NFLEET
