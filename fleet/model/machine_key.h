// Who a machine is: the rules by which an inventory belongs to one.
#pragma once

#include "fleet/model/rows.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

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

/// True for a system UUID that identifies a machine: 32 hexadecimal digits in groups of 8-4-4-4-12 that are
/// not one that many boards share.
bool IsRealUuid(std::string_view uuid);

}  // namespace NFLEET
