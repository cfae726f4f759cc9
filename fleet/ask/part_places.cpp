#include "fleet/ask/part_places.h"

#include "fleet/ask/machine_list.h"
#include "fleet/ask/moment.h"
#include "fleet/ask/version_index.h"
#include "inventory/write/part_words.h"
#include "text/shown_text.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace NFLEET {
namespace {

// A part in one place of one machine.
struct TStay {
    const TMachine* machine = nullptr;
    std::string type;
    std::string part;
    std::string place;
    TSeconds since = 0;
    TSeconds until = open;
    EScope scope = EScope::hardware;

    auto GetOrder() const { return std::tuple(type, since, NameMachine(*machine), part, place, until); }
    bool IsSamePlace(const TStay& other) const {
        return machine == other.machine && type == other.type && part == other.part && place == other.place;
    }
};

std::map<TMachineId, TMachine> ReadMachinesOf(IFleetStore& store, const std::vector<TPresence>& rows) {
    std::vector<TMachineId> ids;
    for (const TPresence& row : rows) {
        ids.push_back(row.place.machine);
    }
    std::ranges::sort(ids);
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    std::map<TMachineId, TMachine> machines;
    for (TMachine& machine : store.FindMachines(ids)) {
        const TMachineId id = machine.id;
        machines.emplace(id, std::move(machine));
    }
    return machines;
}

// A machine whose scopes differ in what they contain has a part in one of them or in several: rows of
// snapshots, which contain more, replace those of documents.
void KeepOneScope(std::vector<TStay>& stays) {
    std::set<std::pair<const TMachine*, std::string>> inSnapshots;
    for (const TStay& stay : stays) {
        if (stay.scope == EScope::snapshot) {
            inSnapshots.emplace(stay.machine, stay.type);
        }
    }
    std::erase_if(stays, [&](const TStay& stay) {
        return stay.scope != EScope::snapshot && inSnapshots.contains({stay.machine, stay.type});
    });
}

// Joins rows between which only another property of the part changed.
std::vector<TStay> JoinStays(std::vector<TStay> stays) {
    std::ranges::sort(stays, {}, [](const TStay& stay) {
        return std::tuple(NameMachine(*stay.machine), stay.machine->key, stay.type, stay.part, stay.place,
                          stay.since);
    });
    std::vector<TStay> joined;
    for (TStay& stay : stays) {
        if (!joined.empty() && joined.back().IsSamePlace(stay) && joined.back().until >= stay.since) {
            joined.back().until = std::max(joined.back().until, stay.until);
        } else {
            joined.push_back(std::move(stay));
        }
    }
    std::ranges::sort(joined, {}, &TStay::GetOrder);
    return joined;
}

void AddNotes(const std::vector<TStay>& stays, TAnswer& answer) {
    for (std::size_t i = 0; i < stays.size(); ++i) {
        for (std::size_t j = i + 1; j < stays.size(); ++j) {
            const TStay& left = stays[i];
            const TStay& right = stays[j];
            const TSeconds begin = std::max(left.since, right.since);
            if (left.machine != right.machine && left.type == right.type &&
                begin < std::min(left.until, right.until)) {
                answer.notes.push_back("in two machines at once from " + FormatMoment(begin) + ": " +
                                       NVORHOST::ToShownText(NameMachine(*left.machine)) + " and " +
                                       NVORHOST::ToShownText(NameMachine(*right.machine)));
            }
        }
    }
}

}  // namespace

TAnswer FindPart(IFleetStore& store, std::string_view identity) {
    const std::vector<TPresence> rows = store.FindIdentity(identity);
    const auto machines = ReadMachinesOf(store, rows);
    const TVersionIndex versions(store, rows);
    std::vector<TStay> stays;
    for (const TPresence& row : rows) {
        const auto machine = machines.find(row.place.machine);
        if (machine != machines.end()) {
            const NINVENTORY::TResource resource = versions.Assemble(row);
            stays.push_back({&machine->second, row.type, DescribePartWithoutPlace(resource),
                             DescribePlace(resource), row.since == always ? machine->second.first : row.since,
                             row.until, row.place.scope});
        }
    }
    KeepOneScope(stays);
    stays = JoinStays(std::move(stays));
    TAnswer answer{.question = "where",
                   .columns = {{"machine", "machine"},
                               {"key", ""},
                               {"resourceType", ""},
                               {"part", "part"},
                               {"place", "place"},
                               {"since", "since"},
                               {"until", "until"}},
                   .emptyText = "no machine has had a part with this identity"};
    for (const TStay& stay : stays) {
        answer.rows.push_back(
            {NameMachine(*stay.machine), stay.machine->key, stay.type, stay.part, MakeTextCell(stay.place),
             TMoment{stay.since},
             stay.until == open ? TCell(TShownValue{"now", ""}) : TCell(TMoment{stay.until})});
    }
    AddNotes(stays, answer);
    return answer;
}

}  // namespace NFLEET
