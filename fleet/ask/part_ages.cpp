#include "fleet/ask/part_ages.h"

#include "fleet/ask/version_index.h"
#include "inventory/check/identifier_origin.h"
#include "inventory/compare/part.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::TResource;

constexpr TSeconds days = 86'400;
constexpr TSeconds years = 365 * days;

struct TSpan {
    TSeconds end;  // exclusive
    std::string_view words;
};

constexpr TSpan spans[] = {
    {7 * days, "less than 7 days"}, {30 * days, "7 to 30 days"}, {90 * days, "30 to 90 days"},
    {years, "90 days to 1 year"},   {2 * years, "1 to 2 years"}, {3 * years, "2 to 3 years"},
    {5 * years, "3 to 5 years"},    {open, "5 years or longer"},
};

// Counts parts by age.
class TAges {
  public:
    void Add(TSeconds age, std::uint64_t parts) {
        const auto* const span =
            std::ranges::find_if(spans, [age](const TSpan& each) { return age < each.end; });
        counts_[static_cast<std::size_t>(span - spans)] += parts;
    }
    std::vector<TAgeCount> List() const {
        std::vector<TAgeCount> list;
        for (std::size_t i = 0; i < std::size(spans); ++i) {
            if (counts_[i] > 0) {
                list.push_back({spans[i].words, counts_[i]});
            }
        }
        return list;
    }

  private:
    std::array<std::uint64_t, std::size(spans)> counts_{};
};

// True if the identifier of a part would be the same in another machine.
bool IsOwnIdentifier(const NINVENTORY::TIdentifierOrigin& origin) {
    using enum NINVENTORY::EKeyOrigin;
    constexpr NINVENTORY::EKeyOrigin own[] = {uuid, worldWideName, serialNumber, address, identity};
    return !origin.isCollisionResolved && !origin.isNumbered && origin.borrowed.empty() &&
           std::ranges::find(own, origin.origin) != std::end(own);
}

// Texts that are equal for rows of the same part. One without an identity of its own is that of the same
// machine with the same identifying values.
std::vector<std::string> MakePartKeys(const TPresence& row, const TResource& resource) {
    std::string here = ToText(row.place.machine) + ToText(row.resource);
    for (const auto& values : row.identity) {
        for (const std::string& value : values) {
            here.append("\n").append(value);
        }
    }
    std::vector<std::string> keys{std::move(here)};
    const std::string name(resource.GetText("Name"));
    const auto add = [&](std::string_view fact, const std::string& value) {
        if (!value.empty()) {
            keys.push_back(std::string(fact) + "\n" + value + "\n" + name);
        }
    };
    for (const std::string_view serial : NINVENTORY::GetPartType(resource.type).serials) {
        add(serial, GetFact(resource, serial));
    }
    const bool hasSerial = keys.size() > 1;
    if (const auto origin = ExplainIdentifier(resource); !hasSerial && IsOwnIdentifier(origin)) {
        add(origin.keyProperty, origin.keyValue);
    }
    return keys;
}

// The parts of one type that machines got or lost after their first inventories.
class TChangedParts {
  public:
    TChangedParts(IFleetStore& store, const std::vector<TMachine>& machines, const std::string& type) {
        for (const TMachine& machine : machines) {
            machines_.emplace(machine.id, &machine);
        }
        rows_ = store.ReadChanges({.types = {type}});
        const TVersionIndex versions(store, rows_);
        keys_.reserve(rows_.size());
        for (const TPresence& row : rows_) {
            keys_.push_back(MakePartKeys(row, versions.Assemble(row)));
            Note(row, keys_.back());
        }
    }

    // Counts the parts that machines have at present. Returns their number for each of those machines.
    std::map<TMachineId, std::uint64_t> Count(TAges& ages) const {
        std::map<TMachineId, std::uint64_t> numbers;
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const TMachine* const machine = FindMachine(rows_[i]);
            if (machine != nullptr && rows_[i].until == open &&
                IsCurrentScope(machine->usesSnapshot, rows_[i].place.scope)) {
                ages.Add(machine->last - GetFirstSeen(keys_[i], rows_[i]), 1);
                ++numbers[machine->id];
            }
        }
        return numbers;
    }

  private:
    const TMachine* FindMachine(const TPresence& row) const {
        const auto found = machines_.find(row.place.machine);
        return found == machines_.end() ? nullptr : found->second;
    }
    void Note(const TPresence& row, const std::vector<std::string>& keys) {
        const TMachine* const machine = FindMachine(row);
        if (machine != nullptr) {
            const TSeconds since = row.since == always ? machine->first : row.since;
            for (const std::string& key : keys) {
                TSeconds& first = firstSeen_.try_emplace(key, since).first->second;
                first = std::min(first, since);
            }
        }
    }
    TSeconds GetFirstSeen(const std::vector<std::string>& keys, const TPresence& row) const {
        TSeconds first = row.since;
        for (const std::string& key : keys) {
            first = std::min(first, firstSeen_.at(key));
        }
        return first;
    }

    std::unordered_map<TMachineId, const TMachine*, TDigestHash> machines_;
    std::vector<TPresence> rows_;
    std::vector<std::vector<std::string>> keys_;  // of each row
    std::unordered_map<std::string, TSeconds> firstSeen_;
};

}  // namespace

std::vector<TAgeCount> CountAges(IFleetStore& store, const std::vector<TMachine>& machines,
                                 const std::string& type) {
    TAges ages;
    const auto changed = TChangedParts(store, machines, type).Count(ages);
    std::unordered_map<TMachineId, TSeconds, TDigestHash> seen;
    for (const TMachine& machine : machines) {
        seen.emplace(machine.id, machine.last - machine.first);
    }
    for (const TPartCount& count : store.CountParts({.model = std::nullopt, .types = {type}})) {
        const auto known = changed.find(count.machine);
        const std::uint64_t later = known == changed.end() ? 0 : known->second;
        const auto age = seen.find(count.machine);
        if (age != seen.end() && count.resources > later) {
            ages.Add(age->second, count.resources - later);
        }
    }
    return ages.List();
}

}  // namespace NFLEET
