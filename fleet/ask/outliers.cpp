#include "fleet/ask/outliers.h"

#include "fleet/ask/machine_groups.h"
#include "fleet/ask/machine_list.h"
#include "fleet/ask/version_index.h"
#include "inventory/compare/part.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/part_words.h"
#include "text/shown_text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <span>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TProperty;
using NINVENTORY::TResource;

// The parts whose number is compared; people add, remove and steal these.
constexpr std::string_view countedTypes[] = {"Processor",     "PhysicalMemory", "DiskDrive",
                                             "LogicalVolume", "EthernetPort",   "PowerSupply"};

struct TCohort {
    std::string group;
    std::set<std::string> models;
    std::unordered_map<TMachineId, const TMachine*, TDigestHash> machines;

    std::size_t GetLimit() const { return std::max<std::size_t>(1, machines.size() / 20); }
    // The largest number of machines that may differ in a property that does not vary.
    std::size_t GetVariation() const { return std::max<std::size_t>(1, machines.size() / 5); }
};

using TMachineIds = std::set<TMachineId>;

using TNumbers = std::map<std::string, std::uint64_t>;  // of machines, by model

struct TValueCount {
    std::uint64_t resources = 0;
    std::map<TDigest, TNumbers> versions{};
    TProperty property{};  // null if the versions lack the property
};

using TValues = std::map<std::string, TValueCount>;                          // by value
using TProperties = std::map<std::pair<std::string, std::string>, TValues>;  // by type and property

std::string MakeValueKey(const TProperty& property) {
    std::string key(1, static_cast<char>('0' + static_cast<int>(property.shape)));
    for (const std::string& value : property.values) {
        key += value + '\0';
    }
    return key;
}

// Returns the names of the compared properties of the versions of each type.
std::map<std::string, std::set<std::string>> ListProperties(std::span<const TVersionCount> counts,
                                                            const TVersionIndex& versions) {
    std::map<std::string, std::set<std::string>> names;
    for (const TVersionCount& count : counts) {
        if (const TVersion* const version = versions.Find(count.version)) {
            for (const TVersionProperty& stored : version->properties) {
                if (!stored.isIdentifying) {
                    names[count.type].insert(stored.property.name);
                }
            }
        }
    }
    return names;
}

const TProperty* FindStable(const TVersion& version, std::string_view name) {
    const auto found = std::ranges::find_if(version.properties, [name](const TVersionProperty& stored) {
        return stored.property.name == name && !stored.isIdentifying;
    });
    return found == version.properties.end() ? nullptr : &found->property;
}

TProperties CountValues(std::span<const TVersionCount> counts, const TVersionIndex& versions) {
    const auto names = ListProperties(counts, versions);
    TProperties properties;
    for (const TVersionCount& count : counts) {
        const TVersion* const version = versions.Find(count.version);
        const auto type = names.find(count.type);
        if (version == nullptr || type == names.end()) {
            continue;
        }
        for (const std::string& name : type->second) {
            const TProperty* const property = FindStable(*version, name);
            const TProperty absent{.name = name, .type = {}, .shape = NINVENTORY::EShape::null, .values = {}};
            TValueCount& value =
                properties[{count.type, name}][MakeValueKey(property == nullptr ? absent : *property)];
            value.resources += count.resources;
            value.versions[count.version][count.model] += count.machines;
            value.property = property == nullptr ? absent : *property;
        }
    }
    return properties;
}

// Returns the number of machines that have the value in its commonest version; others may have it in another
// one.
std::uint64_t CountMachines(const TValueCount& value) {
    std::uint64_t most = 0;
    for (const auto& [version, numbers] : value.versions) {
        std::uint64_t machines = 0;
        for (const auto& [model, number] : numbers) {
            machines += number;
        }
        most = std::max(most, machines);
    }
    return most;
}

// Returns a number of machines, of which at least so many have one of the values: those of different models
// are different ones.
std::uint64_t CountMachines(const std::vector<const TValueCount*>& values) {
    TNumbers most;
    for (const TValueCount* const value : values) {
        for (const auto& [version, numbers] : value->versions) {
            for (const auto& [model, number] : numbers) {
                most[model] = std::max(most[model], number);
            }
        }
    }
    std::uint64_t machines = 0;
    for (const auto& [model, number] : most) {
        machines += number;
    }
    return machines;
}

const TValueCount& FindCommonest(const TValues& values) {
    return std::ranges::max_element(values, {},
                                    [](const auto& entry) {
                                        return std::pair(entry.second.resources, CountMachines(entry.second));
                                    })
        ->second;
}

// A value that few machines have.
struct TRareValue {
    const std::pair<std::string, std::string>* place;  // type and property
    const TValueCount* value;
    const TValueCount* usual;
    std::vector<const TPresence*> rows{};
    TMachineIds machines{};
};

// Leaves out properties that vary so much that the counts alone show it, before their rows are read.
std::vector<TRareValue> FindRareValues(const TProperties& properties, const TCohort& cohort) {
    std::vector<TRareValue> rare;
    for (const auto& [place, values] : properties) {
        const TValueCount& usual = FindCommonest(values);
        std::vector<const TValueCount*> found;
        for (const auto& [key, value] : values) {
            if (&value != &usual && CountMachines(value) <= cohort.GetLimit()) {
                found.push_back(&value);
            }
        }
        if (CountMachines(found) <= cohort.GetVariation()) {
            for (const TValueCount* const value : found) {
                rare.push_back({&place, value, &usual});
            }
        }
    }
    return rare;
}

using TRowsByVersion = std::unordered_map<TDigest, std::vector<const TPresence*>, TDigestHash>;

TRowsByVersion IndexRows(const std::vector<TPresence>& rows) {
    TRowsByVersion index;
    for (const TPresence& row : rows) {
        index[row.version].push_back(&row);
    }
    return index;
}

// Finds the machines of the rare values; drops those of more machines and those of properties that vary.
void AttachRows(const TRowsByVersion& rows, const TCohort& cohort, std::vector<TRareValue>& rare) {
    static const std::vector<const TPresence*> none;
    std::map<const void*, TMachineIds> differing;  // machines by property
    for (TRareValue& value : rare) {
        for (const auto& [version, numbers] : value.value->versions) {
            const auto found = rows.find(version);
            for (const TPresence* const row : found == rows.end() ? none : found->second) {
                if (cohort.machines.contains(row->place.machine)) {
                    value.rows.push_back(row);
                    value.machines.insert(row->place.machine);
                }
            }
        }
        differing[value.place].insert(value.machines.begin(), value.machines.end());
    }
    std::erase_if(rare, [&](const TRareValue& value) {
        return value.rows.empty() || value.machines.size() > cohort.GetLimit() ||
               differing[value.place].size() > cohort.GetVariation();
    });
}

auto GetOrder(const TOutlier& outlier) {
    return std::tie(NameMachine(outlier.machine), outlier.machine.key, outlier.type, outlier.part,
                    outlier.property);
}

// There may be a hundred thousand outliers, so each is moved once.
std::vector<TOutlier> Sort(std::vector<TOutlier> outliers) {
    std::vector<std::size_t> order(outliers.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return GetOrder(outliers[i]); });
    std::vector<TOutlier> sorted;
    sorted.reserve(outliers.size());
    for (const std::size_t i : order) {
        sorted.push_back(std::move(outliers[i]));
    }
    return sorted;
}

TCell MakeCell(const std::string& type, const TProperty& property) {
    if (property.shape == NINVENTORY::EShape::null) {
        return {};
    }
    std::string raw;
    for (const std::string& value : property.values) {
        raw += (&value == &property.values.front() ? "" : ", ") + value;
    }
    return TShownValue{ShowValue(type, property), std::move(raw)};
}

// Returns a machine without outliers, to compare the others with; null if there is none.
const TMachine* FindTypical(const TCohort& cohort, const std::vector<TRareValue>& rare) {
    TMachineIds differing;
    for (const TRareValue& value : rare) {
        differing.insert(value.machines.begin(), value.machines.end());
    }
    const TMachine* typical = nullptr;
    for (const auto& [id, machine] : cohort.machines) {
        if (!differing.contains(id) && (typical == nullptr || machine->key < typical->key)) {
            typical = machine;
        }
    }
    return typical;
}

// The resources of machines without outliers, to compare those of others in the same places with.
class TTypicalMachines {
  public:
    TTypicalMachines(IFleetStore& store, const std::vector<const TMachine*>& machines,
                     const TVersionIndex& versions) {
        std::vector<TMachineScope> places;
        for (const TMachine* const machine : machines) {
            for (const EScope scope : scopes) {
                if (machine != nullptr && IsCurrentScope(machine->usesSnapshot, scope)) {
                    places.push_back({machine->id, scope});
                }
            }
        }
        std::vector<TPresence> rows;
        for (TScopeState& state : store.ReadStates(places)) {
            std::erase_if(state.presences, [](const TPresence& row) { return row.until != open; });
            std::ranges::move(state.presences, std::back_inserter(rows));
        }
        versions_ = TVersionIndex(store, rows, versions);
        for (const TPresence& row : rows) {
            digests_[row.place.machine].emplace(std::pair(row.type, row.resource), row.version);
        }
    }

    // Returns the version of the resource of a machine in the same place; null if that machine has none.
    const TVersion* Find(const TMachine* machine, const TPresence& row) const {
        const auto resources = machine == nullptr ? digests_.end() : digests_.find(machine->id);
        if (resources == digests_.end()) {
            return nullptr;
        }
        const auto found = resources->second.find({row.type, row.resource});
        return found == resources->second.end() ? nullptr : versions_.Find(found->second);
    }

  private:
    using TResources = std::map<std::pair<std::string, TDigest>, TDigest>;  // versions by type and resource

    TVersionIndex versions_;
    std::map<TMachineId, TResources> digests_;
};

void AppendValues(const TCohort& cohort, const std::vector<TRareValue>& rare, const TVersionIndex& versions,
                  const TMachine* typical, const TTypicalMachines& resources,
                  std::vector<TOutlier>& outliers) {
    std::unordered_map<const TPresence*, std::string> parts;
    for (const TRareValue& value : rare) {
        const auto& [type, name] = *value.place;
        for (const TPresence* const row : value.rows) {
            const TVersion* const like = resources.Find(typical, *row);
            const TProperty* const other = like == nullptr ? nullptr : FindStable(*like, name);
            if (other != nullptr && MakeValueKey(*other) == MakeValueKey(value.value->property)) {
                continue;  // it is usual in this place
            }
            const auto [part, isNew] = parts.try_emplace(row);
            if (isNew) {
                part->second = DescribePart(versions.Assemble(*row));
            }
            outliers.push_back({*cohort.machines.at(row->place.machine), type, part->second, name,
                                MakeCell(type, value.value->property),
                                MakeCell(type, other == nullptr ? value.usual->property : *other),
                                value.machines.size(), cohort.machines.size(), cohort.group});
        }
    }
}

// Compares the numbers of parts of one type.
void AppendNumbers(const TCohort& cohort, const std::string& type,
                   const std::unordered_map<TMachineId, std::int64_t, TDigestHash>& numbers,
                   std::vector<TOutlier>& outliers) {
    std::map<std::int64_t, std::vector<const TMachine*>> byNumber;
    for (const auto& [id, machine] : cohort.machines) {
        const auto found = numbers.find(id);
        byNumber[found == numbers.end() ? 0 : found->second].push_back(machine);
    }
    const auto usual =
        std::ranges::max_element(byNumber, {}, [](const auto& entry) { return entry.second.size(); });
    if (cohort.machines.size() - usual->second.size() > cohort.GetVariation()) {
        return;
    }
    for (const auto& [number, machines] : byNumber) {
        if (number == usual->first || machines.size() > cohort.GetLimit()) {
            continue;
        }
        for (const TMachine* const machine : machines) {
            outliers.push_back({*machine, type, NINVENTORY::NameType(type, 2), "number", number, usual->first,
                                machines.size(), cohort.machines.size(), cohort.group});
        }
    }
}

// The numbers of parts of machines, by type.
using TPartNumbers = std::map<std::string, std::unordered_map<TMachineId, std::int64_t, TDigestHash>>;

TPartNumbers CountParts(IFleetStore& store, const std::optional<std::string>& model) {
    const std::vector<std::string> types(std::begin(countedTypes), std::end(countedTypes));
    TPartNumbers numbers;
    for (const TPartCount& count : store.CountParts({.model = model, .types = types})) {
        numbers[count.type][count.machine] = static_cast<std::int64_t>(count.resources);
    }
    return numbers;
}

// Links between resources and data sources describe no part of a machine.
bool IsCompared(const TVersionCount& count) {
    return !NINVENTORY::GetPartType(count.type).isAuxiliary;
}

// A group with what is counted of its machines.
struct TComparison {
    const TCohort* cohort;
    std::vector<TVersionCount> counts;
    TProperties properties{};
    std::vector<TRareValue> rare{};
    const TMachine* typical = nullptr;
};

// The rows of versions in models, and perhaps those of other models.
class TRareRows {
  public:
    explicit TRareRows(const std::vector<TComparison>& comparisons) {
        for (const TComparison& comparison : comparisons) {
            for (const TRareValue& value : comparison.rare) {
                for (const auto& [version, numbers] : value.value->versions) {
                    for (const auto& [model, number] : numbers) {
                        models_[version].insert(model);
                    }
                }
            }
        }
        for (const TComparison& comparison : comparisons) {
            for (const TVersionCount& count : comparison.counts) {
                const auto models = models_.find(count.version);
                if (models != models_.end() && !models->second.contains(count.model)) {
                    others_[count.version] += count.resources;
                }
            }
        }
    }

    // One question is faster than one for each model, unless versions are common elsewhere.
    std::vector<TPresence> Read(IFleetStore& store, const std::optional<std::string>& model) const {
        std::uint64_t left = maxOthers;
        std::vector<TDigest> ofAll;
        std::map<std::string, std::vector<TDigest>> ofModels;
        for (const auto& [version, models] : models_) {
            const auto others = others_.find(version);
            const std::uint64_t number = others == others_.end() ? 0 : others->second;
            if (number <= left) {
                left -= number;
                ofAll.push_back(version);
                continue;
            }
            for (const std::string& name : models) {
                ofModels[name].push_back(version);
            }
        }
        std::vector<TPresence> rows = store.FindPresences(ofAll, model);
        for (const auto& [name, versions] : ofModels) {
            std::ranges::move(store.FindPresences(versions, name), std::back_inserter(rows));
        }
        SortByKey(rows);
        return rows;
    }

  private:
    static constexpr std::uint64_t maxOthers = 20'000;

    std::map<TDigest, std::set<std::string>> models_;  // by version
    std::map<TDigest, std::uint64_t> others_;          // resources of other models, by version
};

using TCohorts = std::map<std::string, TCohort>;  // by group

TCohorts MakeCohorts(const std::vector<TMachine>& machines, const TMachineGroups& groups) {
    TCohorts cohorts;
    for (const TMachine& machine : machines) {
        const std::string& group = groups.Get(machine.id);
        TCohort& cohort = cohorts[group];
        cohort.group = group;
        cohort.models.insert(machine.facts.model);
        cohort.machines.emplace(machine.id, &machine);
    }
    return cohorts;
}

bool IsCompared(const TCohort& cohort) {
    return cohort.machines.size() >= minCohort;
}

// Returns the model if all machines are of one.
std::optional<std::string> FindOnlyModel(const std::vector<TComparison>& comparisons) {
    std::set<std::string> models;
    for (const TComparison& comparison : comparisons) {
        models.insert(comparison.cohort->models.begin(), comparison.cohort->models.end());
    }
    return models.size() == 1 ? std::optional(*models.begin()) : std::nullopt;
}

std::vector<TComparison> MakeComparisons(const TCohorts& cohorts,
                                         std::map<std::string, std::vector<TVersionCount>> counts) {
    std::vector<TComparison> comparisons;
    for (const auto& [group, cohort] : cohorts) {
        if (IsCompared(cohort)) {
            std::erase_if(counts[group], [](const TVersionCount& count) { return !IsCompared(count); });
            comparisons.push_back({&cohort, std::move(counts[group])});
        }
    }
    return comparisons;
}

TVersionIndex ReadVersions(IFleetStore& store, const std::vector<TComparison>& comparisons) {
    std::vector<TVersionCount> counts;
    for (const TComparison& comparison : comparisons) {
        counts.insert(counts.end(), comparison.counts.begin(), comparison.counts.end());
    }
    return TVersionIndex(store, counts);
}

// The store is asked once for all groups: the answers to many small questions take longer.
std::vector<TOutlier> CompareCohorts(IFleetStore& store, const TCohorts& cohorts,
                                     std::map<std::string, std::vector<TVersionCount>> counts) {
    std::vector<TComparison> comparisons = MakeComparisons(cohorts, std::move(counts));
    if (comparisons.empty()) {
        return {};
    }
    const auto model = FindOnlyModel(comparisons);
    const TVersionIndex versions = ReadVersions(store, comparisons);
    for (TComparison& comparison : comparisons) {
        comparison.properties = CountValues(comparison.counts, versions);
        comparison.rare = FindRareValues(comparison.properties, *comparison.cohort);
    }
    const std::vector<TPresence> rows = TRareRows(comparisons).Read(store, model);
    const TRowsByVersion byVersion = IndexRows(rows);
    std::vector<const TMachine*> typical;
    for (TComparison& comparison : comparisons) {
        AttachRows(byVersion, *comparison.cohort, comparison.rare);
        comparison.typical =
            comparison.rare.empty() ? nullptr : FindTypical(*comparison.cohort, comparison.rare);
        typical.push_back(comparison.typical);
    }
    const TTypicalMachines resources(store, typical, versions);
    const TPartNumbers numbers = CountParts(store, model);
    std::vector<TOutlier> outliers;
    for (const TComparison& comparison : comparisons) {
        std::vector<TOutlier> found;
        AppendValues(*comparison.cohort, comparison.rare, versions, comparison.typical, resources, found);
        for (const auto& [type, partNumbers] : numbers) {
            AppendNumbers(*comparison.cohort, type, partNumbers, found);
        }
        std::ranges::move(Sort(std::move(found)), std::back_inserter(outliers));
    }
    return outliers;
}

std::vector<TCell> MakeCells(TOutlier outlier) {
    return {MakeTextCell(outlier.machine.facts.model),
            NameMachine(outlier.machine),
            outlier.machine.key,
            std::move(outlier.type),
            std::move(outlier.part),
            std::move(outlier.property),
            std::move(outlier.value),
            std::move(outlier.usual),
            static_cast<std::int64_t>(outlier.machines),
            static_cast<std::int64_t>(outlier.cohort),
            MakeTextCell(std::move(outlier.group))};
}

}  // namespace

std::vector<TOutlier> FindOutliers(IFleetStore& store, const std::vector<TMachine>& machines,
                                   const std::string& groupBy) {
    const TMachineGroups groups(store, machines, groupBy);
    return CompareCohorts(store, MakeCohorts(machines, groups),
                          groups.CountVersions(store, machines, minCohort));
}

TAnswer ListOutliers(IFleetStore& store, const std::optional<std::string>& model,
                     const std::string& groupBy) {
    const bool isByModel = groupBy == modelProperty;
    const std::string shown = NVORHOST::ToShownText(groupBy);
    TAnswer answer{.question = "outliers",
                   .columns = {{"model", "model", /*isMinor=*/true},
                               {"machine", "machine"},
                               {"key", ""},
                               {"resourceType", ""},
                               {"part", "part"},
                               {"property", "property"},
                               {"value", "value"},
                               {"usual", "usual value"},
                               {"machines", "machines"},
                               {"of", "of", /*isMinor=*/true},
                               {"group", isByModel ? "" : shown}},
                   .emptyText = isByModel ? "no machine differs from the others of its model"
                                          : "no machine differs from the others with its " + shown};
    std::vector<TMachine> machines = store.ReadMachines();
    if (model) {
        std::erase_if(machines, [&](const TMachine& machine) { return machine.facts.model != *model; });
        if (machines.empty()) {
            throw TQuestionError("no machine is of the model '" + NVORHOST::ToShownText(*model) + "'");
        }
    }
    const TMachineGroups groups(store, machines, groupBy);
    const TCohorts cohorts = MakeCohorts(machines, groups);
    for (TOutlier& outlier :
         CompareCohorts(store, cohorts, groups.CountVersions(store, machines, minCohort))) {
        answer.rows.push_back(MakeCells(std::move(outlier)));
    }
    const auto tooSmall =
        std::ranges::count_if(cohorts, [](const auto& entry) { return !IsCompared(entry.second); });
    if (tooSmall > 0) {
        answer.notes.push_back((isByModel ? "models" : "values of " + shown) + " with fewer than " +
                               std::to_string(minCohort) +
                               " machines, which are not compared: " + std::to_string(tooSmall));
    }
    return answer;
}

}  // namespace NFLEET
