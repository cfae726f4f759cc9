#include "tools/synthesize/fleet_description.h"

#include "text/lines.h"
#include "text/numbers.h"
#include "text/trim.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <span>
#include <stdexcept>
#include <utility>

namespace NSYNTHESIS {
namespace {

using NVORHOST::ParseNumber;
using NVORHOST::SplitAt;
using NVORHOST::TrimBlanks;

constexpr std::uint64_t maxNumber = 10'000'000;

std::uint64_t ReadNumber(std::string_view text) {
    const auto number = ParseNumber<std::uint64_t>(text);
    if (!number || *number > maxNumber) {
        throw std::invalid_argument("'" + std::string(text) + "' is not a number up to 10000000");
    }
    return *number;
}

// Reads "0.25 %" without rounding, so that a fleet is the same on every machine.
std::uint64_t ReadRate(std::string_view text) {
    if (!text.ends_with('%')) {
        throw std::invalid_argument("a rate ends in %");
    }
    text.remove_suffix(1);
    const auto [whole, fraction] = SplitAt(TrimBlanks(text), '.');
    constexpr std::size_t places = 4;
    std::string digits(fraction.substr(0, places));
    digits.resize(places, '0');
    return ReadNumber(whole) * 10'000 + ReadNumber(digits);
}

std::chrono::sys_days ReadDay(std::string_view text) {
    const auto year = ParseNumber<int>(text.substr(0, 4));
    const auto month = ParseNumber<unsigned>(text.size() == 10 ? text.substr(5, 2) : "");
    const auto day = ParseNumber<unsigned>(text.size() == 10 ? text.substr(8, 2) : "");
    const auto date = std::chrono::year(year.value_or(0)) / std::chrono::month(month.value_or(0)) /
                      std::chrono::day(day.value_or(0));
    if (!date.ok()) {
        throw std::invalid_argument("'" + std::string(text) + "' is not a date such as 2026-03-01");
    }
    return date;
}

// Assigns the text of a value to a member.
template <typename T>
struct TKey {
    std::string_view name;
    void (*assign)(T& target, std::string_view value);
};

template <auto member>
constexpr auto asText = [](auto& target, std::string_view value) { target.*member = value; };
template <auto member>
constexpr auto asNumber = [](auto& target, std::string_view value) { target.*member = ReadNumber(value); };
template <auto member>
constexpr auto asRate = [](auto& target, std::string_view value) { target.*member = ReadRate(value); };

constexpr TKey<TFleetDescription> fleetKeys[] = {
    {"seed", asNumber<&TFleetDescription::seed>},
    {"machines", asNumber<&TFleetDescription::machines>},
    {"days", asNumber<&TFleetDescription::days>},
    {"first-day", [](TFleetDescription& fleet, std::string_view value) { fleet.firstDay = ReadDay(value); }},
};

constexpr TKey<TModel> modelKeys[] = {
    {"vendor", asText<&TModel::vendor>},
    {"share", asNumber<&TModel::share>},
    {"firmware", asText<&TModel::firmware>},
    {"firmware-date", asText<&TModel::firmwareDate>},
    {"old-firmware", asText<&TModel::oldFirmware>},
    {"old-firmware-date", asText<&TModel::oldFirmwareDate>},
    {"processor", asText<&TModel::processor>},
    {"sockets", asNumber<&TModel::sockets>},
    {"slots", asNumber<&TModel::slots>},
    {"modules", asNumber<&TModel::modules>},
    {"module-mib", asNumber<&TModel::moduleMiB>},
    {"module-speed", asNumber<&TModel::moduleSpeed>},
    {"module-part", asText<&TModel::modulePart>},
    {"disks", asNumber<&TModel::disks>},
    {"disk-gb", asNumber<&TModel::diskGB>},
    {"disk-model", asText<&TModel::diskModel>},
    {"disk-firmware", asText<&TModel::diskFirmware>},
    {"old-disk-firmware", asText<&TModel::oldDiskFirmware>},
    {"ports", asNumber<&TModel::ports>},
    {"adapters", asNumber<&TModel::adapters>},
};

constexpr TKey<TFault> faultKeys[] = {
    {"rate", asRate<&TFault::ratePerMillion>},
    {"model", [](TFault& fault, std::string_view value) { fault.model = value; }},
};

constexpr TKey<TChange> changeKeys[] = {
    {"rate", asRate<&TChange::ratePerMillion>},
    {"day", asNumber<&TChange::day>},
    {"machine", asNumber<&TChange::machine>},
    {"to", asNumber<&TChange::to>},
};

template <typename T>
struct TKindName {
    std::string_view name;
    T kind;
};

constexpr TKindName<EFault> faultNames[] = {
    {"older-firmware", EFault::olderFirmware},
    {"missing-module", EFault::missingModule},
    {"slower-module", EFault::slowerModule},
    {"narrower-link", EFault::narrowerLink},
    {"older-disk-firmware", EFault::olderDiskFirmware},
};

constexpr TKindName<EChangeKind> changeNames[] = {
    {"replaced-disk", EChangeKind::replacedDisk},   {"replaced-module", EChangeKind::replacedModule},
    {"moved-disk", EChangeKind::movedDisk},         {"moved-module", EChangeKind::movedModule},
    {"stolen-module", EChangeKind::stolenModule},   {"updated-firmware", EChangeKind::updatedFirmware},
    {"replaced-board", EChangeKind::replacedBoard},
};

template <typename T, std::size_t count>
T ReadKind(const TKindName<T> (&names)[count], std::string_view name) {
    const auto* const row = std::ranges::find(names, name, &TKindName<T>::name);
    if (row == std::end(names)) {
        throw std::invalid_argument("unknown kind '" + std::string(name) + "'");
    }
    return row->kind;
}

// Returns the function that takes the keys of a section.
using TAssign = std::function<void(std::string_view key, std::string_view value)>;

template <typename T>
TAssign MakeAssign(std::span<const TKey<T>> keys, const std::function<T&()>& getTarget) {
    return [keys, getTarget](std::string_view name, std::string_view value) {
        const auto key = std::ranges::find(keys, name, &TKey<T>::name);
        if (key == keys.end()) {
            throw std::invalid_argument("unknown key '" + std::string(name) + "'");
        }
        key->assign(getTarget(), value);
    };
}

TAssign BeginSection(TFleetDescription& fleet, std::string_view kind, std::string_view name) {
    if (kind == "fleet") {
        return MakeAssign<TFleetDescription>(
            fleetKeys, [&]() -> auto& { return fleet; });
    }
    if (kind == "model") {
        fleet.models.emplace_back().name = name;
        return MakeAssign<TModel>(
            modelKeys, [&]() -> auto& { return fleet.models.back(); });
    }
    if (kind == "fault") {
        fleet.faults.emplace_back().kind = ReadKind(faultNames, name);
        return MakeAssign<TFault>(
            faultKeys, [&]() -> auto& { return fleet.faults.back(); });
    }
    if (kind == "change") {
        fleet.changes.emplace_back().kind = ReadKind(changeNames, name);
        return MakeAssign<TChange>(
            changeKeys, [&]() -> auto& { return fleet.changes.back(); });
    }
    throw std::invalid_argument("unknown section '" + std::string(kind) + "'");
}

void RequireWhole(const TFleetDescription& fleet) {
    const auto require = [](bool holds, const char* message) {
        if (!holds) {
            throw std::invalid_argument(message);
        }
    };
    require(fleet.machines > 0 && fleet.days > 0, "a fleet has at least one machine and one day");
    require(!fleet.models.empty(), "a fleet has at least one model");
    for (const TModel& model : fleet.models) {
        require(model.share > 0, "the share of a model is not 0");
        require(model.modules <= model.slots, "a model has more modules than slots");
        require(model.disks <= 26 && model.ports <= 8, "a model has at most 26 disks and 8 ports");
        require(model.adapters <= 128 && model.slots <= 64 && model.sockets >= 1 && model.sockets <= 4,
                "a model has at most 128 adapters, 64 slots and 4 sockets");
    }
    for (const TChange& change : fleet.changes) {
        require(change.day.has_value() == change.machine.has_value(), "an event has a day and a machine");
        require(change.machine.value_or(0) < fleet.machines && change.to.value_or(0) < fleet.machines,
                "the machine of an event does not exist");
    }
}

}  // namespace

TFleetDescription ParseFleetDescription(std::string_view text) {
    TFleetDescription fleet;
    TAssign assign = [](std::string_view, std::string_view) {
        throw std::invalid_argument("a key before the first section");
    };
    std::size_t number = 0;
    const auto takeLine = [&](std::string_view line) {
        line = TrimBlanks(SplitAt(line, '#').first);
        if (line.starts_with('[') && line.ends_with(']')) {
            const auto [kind, name] = SplitAt(line.substr(1, line.size() - 2), ' ');
            assign = BeginSection(fleet, kind, TrimBlanks(name));
        } else if (!line.empty()) {
            const auto [key, value] = SplitAt(line, '=');
            assign(TrimBlanks(key), TrimBlanks(value));
        }
    };
    NVORHOST::ForEachLine(text, [&](std::string_view line) {
        ++number;
        try {
            takeLine(line);
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument("line " + std::to_string(number) + ": " + error.what());
        }
    });
    RequireWhole(fleet);
    return fleet;
}

}  // namespace NSYNTHESIS
