#include "fleet/load/machine_finder.h"

#include "fleet/model/machine_traits.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace NFLEET {
namespace {

// The name of a machine for which no folder is known is that of many.
constexpr std::string_view emptyPath = "path:";

void RemoveRepeated(std::vector<TDigest>& digests) {
    std::ranges::sort(digests);
    digests.erase(std::unique(digests.begin(), digests.end()), digests.end());
}

}  // namespace

TMachineFinder::TMachineFinder(IFleetStore& store, std::span<const TMachineTraits* const> traits) {
    std::vector<TDigest> ids;
    for (const TMachineTraits* const one : traits) {
        std::ranges::transform(ListMachineNames(*one), std::back_inserter(ids), &TMachineName::GetDigest);
    }
    RemoveRepeated(ids);
    for (TAlias& alias : store.FindAliases(ids)) {
        ids.push_back(alias.to);
        const TDigest from = alias.from;
        aliases_.emplace(from, std::move(alias));
    }
    RemoveRepeated(ids);
    for (TMachine& machine : store.FindMachines(ids)) {
        const TMachineId id = machine.id;
        machines_.emplace(id, std::move(machine));
    }
}

std::vector<TMachineId> TMachineFinder::ListMachines() const {
    std::vector<TMachineId> ids;
    for (const auto& [id, machine] : machines_) {
        ids.push_back(id);
    }
    std::ranges::sort(ids);
    return ids;
}

std::vector<TAlias> TMachineFinder::ListNewAliases() const {
    std::vector<TAlias> aliases;
    std::ranges::transform(newAliases_, std::back_inserter(aliases),
                           [this](const TDigest& name) { return aliases_.at(name); });
    return aliases;
}

TMachineId TMachineFinder::Find(const TMachineTraits& traits) {
    const std::vector<TMachineName> names = ListMachineNames(traits);
    TMachine* const found = FindNamed(traits, names);
    TMachine& machine = found == nullptr ? Add(traits) : *found;
    FillFacts(traits.facts, machine.facts);
    AddNames(names, machine);
    return machine.id;
}

// A machine that was merged stays merged, even if its inventories differ.
TMachine* TMachineFinder::FindNamed(const TMachineTraits& traits, const std::vector<TMachineName>& names) {
    for (const TMachineName& name : names) {
        TMachine* const machine = FindUnder(name);
        if (machine != nullptr && IsMerged(name)) {
            return machine;
        }
        if (machine != nullptr && IsOfMachine(traits, name, *machine)) {
            ImproveKey(traits, *machine);
            return machine;
        }
    }
    return nullptr;
}

TMachine* TMachineFinder::FindUnder(const TMachineName& name) {
    const TDigest digest = name.GetDigest();
    const auto alias = aliases_.find(digest);
    const auto machine = machines_.find(alias == aliases_.end() ? digest : alias->second.to);
    if (machine == machines_.end() || (IsShared(digest) && machine->second.key != name.text)) {
        return nullptr;
    }
    return &machine->second;
}

bool TMachineFinder::IsMerged(const TMachineName& name) const {
    const auto alias = aliases_.find(name.GetDigest());
    return alias != aliases_.end() && !alias->second.fromKey.empty();
}

bool TMachineFinder::IsShared(const TDigest& name) const {
    const auto alias = aliases_.find(name);
    return alias != aliases_.end() && alias->second.to == name;
}

// The digest of a key is that of another machine if that one had the key before it got a better one.
TMachine& TMachineFinder::Add(const TMachineTraits& traits) {
    TMachineKey key = MakeMachineKey(traits);
    TMachineId id = key.GetId();
    if (machines_.contains(id)) {
        id = MakeDigest(key.key + " again");
        SetAlias(key.GetId(), id);
    }
    return machines_[id] = {id, std::move(key.key), key.rule, traits.facts, open, 0, false};
}

void TMachineFinder::ImproveKey(const TMachineTraits& traits, TMachine& machine) {
    TMachineKey key = MakeMachineKey(traits);
    if (IsBetterKey(key, machine)) {
        if (key.GetId() != machine.id) {
            SetAlias(key.GetId(), machine.id);
        }
        machine.key = std::move(key.key);
        machine.rule = key.rule;
    }
}

// A name that leads to another machine already is that of several.
void TMachineFinder::AddNames(const std::vector<TMachineName>& names, const TMachine& machine) {
    for (const TMachineName& name : names) {
        if (name.text == emptyPath || name.text == machine.key || IsMerged(name)) {
            continue;
        }
        const TMachine* const other = FindUnder(name);
        if (other == nullptr && !IsShared(name.GetDigest())) {
            SetAlias(name.GetDigest(), machine.id);
        } else if (other != nullptr && other->id != machine.id && other->key != name.text) {
            SetAlias(name.GetDigest(), name.GetDigest());
        }
    }
}

void TMachineFinder::SetAlias(const TDigest& name, const TMachineId& machine) {
    aliases_[name] = {name, {}, machine};
    newAliases_.insert(name);
}

}  // namespace NFLEET
