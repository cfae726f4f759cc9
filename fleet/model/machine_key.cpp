#include "fleet/model/machine_key.h"

#include "text/ascii.h"

#include <algorithm>
#include <array>

namespace NFLEET {
namespace {

// UUIDs that boards are shipped with in place of one of their own.
constexpr std::string_view sharedUuids[] = {
    "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
    "12345678-1234-5678-90AB-CDDEEFAABBCC", "11111111-2222-3333-4444-555555555555",
    "00010203-0405-0607-0809-0A0B0C0D0E0F", "FEFEFEFE-FEFE-FEFE-FEFE-FEFEFEFEFEFE",
};

// Boards of one series may share a UUID, so the serial number is a part of the key, or the address of a
// machine that has no serial number.
std::optional<std::string> MakeUuidKey(const TMachineTraits& traits) {
    if (!IsRealUuid(traits.facts.uuid)) {
        return std::nullopt;
    }
    std::string key = "uuid:" + NVORHOST::ToUpperCase(traits.facts.uuid);
    if (!traits.facts.serial.empty()) {
        return key + " serial:" + traits.facts.serial;
    }
    return traits.address.empty() ? key : key + " address:" + NVORHOST::ToUpperCase(traits.address);
}

std::optional<std::string> MakeSystemKey(const TMachineTraits& traits) {
    if (traits.system.empty() || traits.facts.serial.empty()) {
        return std::nullopt;
    }
    return "system:" + traits.system;
}

std::optional<std::string> MakePathKey(const TMachineTraits& traits) {
    return "path:" + traits.pathPart;
}

constexpr TMachineRule rules[] = {
    {EMachineRule::uuid,
     "system UUID of the Server, with its serial number or else its first hardware address", MakeUuidKey},
    {EMachineRule::systemInformation, "manufacturer, machine type, model and serial number", MakeSystemKey},
    {EMachineRule::path, "folder that the inventory was read from", MakePathKey},
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
