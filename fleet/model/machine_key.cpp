#include "fleet/model/machine_key.h"

#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace NFLEET {
namespace {

// UUIDs that boards are shipped with in place of one of their own.
constexpr std::string_view sharedUuids[] = {
    "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
    "12345678-1234-5678-90AB-CDDEEFAABBCC", "11111111-2222-3333-4444-555555555555",
    "00010203-0405-0607-0809-0A0B0C0D0E0F", "FEFEFEFE-FEFE-FEFE-FEFE-FEFEFEFEFEFE",
};

std::optional<std::string> MakeUuidName(const TMachineTraits& traits) {
    return IsRealUuid(traits.facts.uuid) ? std::optional("uuid:" + NVORHOST::ToUpperCase(traits.facts.uuid))
                                         : std::nullopt;
}

std::optional<std::string> MakeSerialName(const TMachineTraits& traits) {
    const auto uuid = MakeUuidName(traits);
    return uuid && !traits.facts.serial.empty() ? std::optional(*uuid + " serial:" + traits.facts.serial)
                                                : std::nullopt;
}

std::optional<std::string> MakeUuidAddressName(const TMachineTraits& traits) {
    const auto uuid = MakeUuidName(traits);
    return uuid && !traits.address.empty()
               ? std::optional(*uuid + " address:" + NVORHOST::ToUpperCase(traits.address))
               : std::nullopt;
}

std::optional<std::string> MakeSystemName(const TMachineTraits& traits) {
    return !traits.system.empty() && !traits.facts.serial.empty() ? std::optional("system:" + traits.system)
                                                                  : std::nullopt;
}

std::optional<std::string> MakeAddressName(const TMachineTraits& traits) {
    return traits.address.empty() ? std::nullopt
                                  : std::optional("address:" + NVORHOST::ToUpperCase(traits.address));
}

std::optional<std::string> MakePathName(const TMachineTraits& traits) {
    return "path:" + traits.pathPart;
}

// The folder that a machine whose UUID cannot be read sends to.
std::optional<std::string> MakeHostName(const TMachineTraits& traits) {
    return traits.facts.name.empty() ? std::nullopt : std::optional("path:" + traits.facts.name);
}

// The kinds of names, the most certain ones first. A key has one of the kinds up to `path`.
enum class EKind : std::uint8_t { serial, uuidAddress, uuid, system, path, address, host };

struct TKindRow {
    EKind kind;
    EMachineRule rule;
    std::optional<std::string> (*make)(const TMachineTraits& traits);
};

// Boards of one series may share a UUID, so the serial number is a part of the key, or the address of a
// machine that has no serial number.
constexpr TKindRow kindRows[] = {
    {EKind::serial, EMachineRule::uuid, MakeSerialName},
    {EKind::uuidAddress, EMachineRule::uuid, MakeUuidAddressName},
    {EKind::uuid, EMachineRule::uuid, MakeUuidName},
    {EKind::system, EMachineRule::systemInformation, MakeSystemName},
    {EKind::path, EMachineRule::path, MakePathName},
    {EKind::address, EMachineRule::path, MakeAddressName},
    {EKind::host, EMachineRule::path, MakeHostName},
};

// Returns the kind of a key.
EKind FindKind(std::string_view text) {
    constexpr std::size_t uuidEnd = std::string_view("uuid:XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX").size();
    if (text.starts_with("uuid:")) {
        const std::string_view rest = text.substr(std::min(uuidEnd, text.size()));
        return rest.starts_with(" serial:")    ? EKind::serial
               : rest.starts_with(" address:") ? EKind::uuidAddress
                                               : EKind::uuid;
    }
    return text.starts_with("system:") ? EKind::system : EKind::path;
}

std::optional<std::string> MakeName(EKind kind, const TMachineTraits& traits) {
    return std::ranges::find(kindRows, kind, &TKindRow::kind)->make(traits);
}

bool Agree(std::string_view left, std::string_view right) {
    return left.empty() || right.empty() || left == right;
}

bool AgreeOnUuid(std::string_view left, std::string_view right) {
    return !IsRealUuid(left) || !IsRealUuid(right) ||
           NVORHOST::ToUpperCase(left) == NVORHOST::ToUpperCase(right);
}

bool NamesMachine(const TMachineFacts& facts) {
    return !facts.serial.empty() || IsRealUuid(facts.uuid);
}

// True if both have one host name, or the folder is that of the only one.
bool HasOneHost(const TMachineTraits& traits, std::string_view name) {
    return traits.facts.name.empty() || name.empty()
               ? !traits.pathPart.empty() && (traits.pathPart == traits.facts.name || traits.pathPart == name)
               : traits.facts.name == name;
}

// Several machines may have one path, address or host name.
bool IsSameHost(const TMachineTraits& traits, const TMachineFacts& facts) {
    return NamesMachine(traits.facts) != NamesMachine(facts) && Agree(traits.facts.vendor, facts.vendor) &&
           Agree(traits.facts.model, facts.model) && HasOneHost(traits, facts.name);
}

std::optional<std::string> MakeUuidKey(const TMachineTraits& traits) {
    for (const EKind kind : {EKind::serial, EKind::uuidAddress, EKind::uuid}) {
        if (auto name = MakeName(kind, traits)) {
            return name;
        }
    }
    return std::nullopt;
}

constexpr TMachineRule rules[] = {
    {EMachineRule::uuid,
     "system UUID of the Server, with its serial number or else its first hardware address", MakeUuidKey},
    {EMachineRule::systemInformation, "manufacturer, machine type, model and serial number", MakeSystemName},
    {EMachineRule::path, "folder that the inventory was read from", MakePathName},
};

bool HasUuidForm(std::string_view uuid) {
    constexpr std::string_view form = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";
    return std::ranges::equal(uuid, form, [](char c, char expected) {
        return expected == 'X' ? NVORHOST::IsHexDigit(c) : c == expected;
    });
}

}  // namespace

std::span<const TMachineRule> GetMachineRules() {
    return rules;
}

TMachineKey MakeMachineKey(const TMachineTraits& traits) {
    for (const TMachineRule& rule : rules) {
        if (auto key = rule.makeKey(traits)) {
            return {rule.rule, std::move(*key)};
        }
    }
    return {};
}

std::vector<TMachineName> ListMachineNames(const TMachineTraits& traits) {
    std::vector<TMachineName> names;
    for (const TKindRow& row : kindRows) {
        if (auto text = row.make(traits)) {
            names.push_back({row.rule, std::move(*text)});
        }
    }
    return names;
}

bool IsOfMachine(const TMachineTraits& traits, const TMachineName& name, const TMachine& machine) {
    if (name.text == machine.key) {
        return true;
    }
    const EKind keyKind = FindKind(machine.key);
    const auto own = MakeName(keyKind, traits);
    const bool contradicts = keyKind < EKind::path && own && *own != machine.key;
    return !contradicts && Agree(traits.facts.serial, machine.facts.serial) &&
           AgreeOnUuid(traits.facts.uuid, machine.facts.uuid) &&
           (name.rule != EMachineRule::path || IsSameHost(traits, machine.facts));
}

bool IsBetterKey(const TMachineKey& key, const TMachine& machine) {
    return FindKind(key.key) < FindKind(machine.key);
}

bool IsRealUuid(std::string_view uuid) {
    if (!HasUuidForm(uuid)) {
        return false;
    }
    const std::string upper = NVORHOST::ToUpperCase(uuid);
    const bool isOneDigit =
        std::ranges::all_of(upper, [&](char c) { return c == '-' || c == upper.front(); });
    return !isOneDigit && std::ranges::find(sharedUuids, upper) == std::end(sharedUuids);
}

}  // namespace NFLEET
