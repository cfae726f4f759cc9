#include "fleet/ask/machine_groups.h"

#include "fleet/ask/answer.h"
#include "fleet/ask/machine_list.h"
#include "fleet/ask/version_index.h"
#include "text/lines.h"
#include "text/shown_text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace NFLEET {
namespace {

using TValues = std::unordered_map<TMachineId, std::set<std::string>, TDigestHash>;
using TSizes = std::map<std::string, std::uint64_t>;               // machines by group
using TCounts = std::map<TDigest, TVersionCount>;                  // of one model, by version
using TLists = std::map<std::string, std::vector<TVersionCount>>;  // by group

const TVersionProperty* FindProperty(const TVersion& version, std::string_view name) {
    const auto found = std::ranges::find_if(
        version.properties, [name](const TVersionProperty& stored) { return stored.property.name == name; });
    return found == version.properties.end() ? nullptr : &*found;
}

// A question for each of so few values is faster than one for all resources.
constexpr std::size_t maxQuestions = 16;

// Versions by the values of the property; those whose values are not in the version are left out.
std::map<std::vector<std::string>, std::vector<TDigest>> GroupVersions(const TVersionIndex& versions,
                                                                       const std::set<TDigest>& wanted,
                                                                       std::string_view property) {
    std::map<std::vector<std::string>, std::vector<TDigest>> groups;
    for (const TDigest& digest : wanted) {
        const TVersion* const version = versions.Find(digest);
        const TVersionProperty* const found = version == nullptr ? nullptr : FindProperty(*version, property);
        if (found != nullptr && !found->isIdentifying) {
            groups[found->property.values].push_back(digest);
        }
    }
    return groups;
}

TValues ReadValues(IFleetStore& store, std::string_view type, std::string_view property) {
    const auto counts = store.CountVersions({.model = std::nullopt, .types = {std::string(type)}});
    const TVersionIndex versions(store, counts);
    std::set<TDigest> wanted;
    for (const TVersionCount& count : counts) {
        wanted.insert(count.version);
    }
    TValues values;
    const auto groups = GroupVersions(versions, wanted, property);
    if (groups.size() <= maxQuestions) {
        for (const auto& [texts, ofTexts] : groups) {
            for (const TMachineId& machine : store.FindMachinesWith(ofTexts)) {
                values[machine].insert(texts.begin(), texts.end());
            }
            for (const TDigest& version : ofTexts) {
                wanted.erase(version);
            }
        }
        std::erase_if(wanted, [&](const TDigest& digest) {
            const TVersion* const version = versions.Find(digest);
            return version == nullptr || FindProperty(*version, property) == nullptr;
        });
    }
    for (const TPresence& row :
         store.FindPresences(std::vector(wanted.begin(), wanted.end()), std::nullopt)) {
        const NINVENTORY::TResource resource = versions.Assemble(row);
        if (const NINVENTORY::TProperty* const found = resource.Find(property)) {
            values[row.place.machine].insert(found->values.begin(), found->values.end());
        }
    }
    return values;
}

std::string Join(const std::set<std::string>& values) {
    std::string joined;
    for (const std::string& value : values) {
        joined.append(joined.empty() ? "" : ", ").append(value);
    }
    return joined;
}

void AddCount(const TVersionCount& count, std::uint64_t machines, std::uint64_t resources, TCounts& counts) {
    TVersionCount& sum = counts[count.version];
    sum.model = count.model;
    sum.type = count.type;
    sum.version = count.version;
    sum.machines += machines;
    sum.resources += resources;
}

// Counts the rows of each group. Rows of one machine follow one another.
void CountRows(const std::string& model, const std::vector<TPresence>& rows, const TMachineGroups& groups,
               std::map<std::string, TCounts>& counts) {
    std::map<TDigest, TMachineId> last;  // machine by version
    for (const TPresence& row : rows) {
        const auto [machine, isFirst] = last.try_emplace(row.version, row.place.machine);
        const bool isNew = isFirst || machine->second != row.place.machine;
        machine->second = row.place.machine;
        AddCount({.model = model, .type = row.type, .version = row.version}, isNew ? 1 : 0, 1,
                 counts[groups.Get(row.place.machine)]);
    }
}

// Counts the versions of one model, whose machines are in several groups.
void CountParts(IFleetStore& store, const std::string& model, std::span<const TVersionCount> versionCounts,
                const TSizes& parts, const TMachineGroups& groups, TLists& lists) {
    std::map<std::string, TCounts> counts;
    std::uint64_t all = 0;
    for (const auto& [group, size] : parts) {
        all += size;
    }
    std::vector<TDigest> differing;
    for (const TVersionCount& count : versionCounts) {
        if (count.machines < all && parts.size() > 1) {
            differing.push_back(count.version);
            continue;
        }
        for (const auto& [group, size] : parts) {
            AddCount(count, std::min(count.machines, size), count.resources * size / all, counts[group]);
        }
    }
    CountRows(model, store.FindPresences(differing, model), groups, counts);
    for (auto& [group, versions] : counts) {
        for (auto& [version, count] : versions) {
            lists[group].push_back(std::move(count));
        }
    }
}

}  // namespace

TMachineGroups::TMachineGroups(IFleetStore& store, std::span<const TMachine> machines,
                               std::string_view property) {
    if (property.find('.') == std::string_view::npos) {
        for (const TMachine& machine : machines) {
            groups_.emplace(machine.id, GetFact(machine, property));
        }
        return;
    }
    const auto [type, name] = NVORHOST::SplitAt(property, '.');
    const TValues values = ReadValues(store, type, name);
    if (values.empty()) {
        throw TQuestionError("no part of a machine has the property '" +
                             NVORHOST::ToShownText(std::string(property)) + "'");
    }
    for (const TMachine& machine : machines) {
        const auto found = values.find(machine.id);
        groups_.emplace(machine.id, found == values.end() ? std::string() : Join(found->second));
    }
}

std::map<std::string, std::vector<TVersionCount>> TMachineGroups::CountVersions(
    IFleetStore& store, std::span<const TMachine> machines, std::size_t minMachines) const {
    TSizes sizes;
    std::map<std::string, TSizes> partsOf;  // by model
    for (const TMachine& machine : machines) {
        ++sizes[Get(machine.id)];
        ++partsOf[machine.facts.model][Get(machine.id)];
    }
    std::map<std::string, std::vector<TVersionCount>> counts;  // by model
    const auto model = partsOf.size() == 1 ? std::optional(partsOf.begin()->first) : std::nullopt;
    for (TVersionCount& count : store.CountVersions({.model = model, .types = {}})) {
        std::vector<TVersionCount>& ofModel = counts[count.model];
        ofModel.push_back(std::move(count));
    }
    TLists lists;
    for (const auto& [name, parts] : partsOf) {
        if (std::ranges::any_of(parts, [&](const auto& part) { return sizes[part.first] >= minMachines; })) {
            CountParts(store, name, counts[name], parts, *this, lists);
        }
    }
    return lists;
}

}  // namespace NFLEET
