#include "fleet/report/duplicates.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

struct TFactRow {
    std::string_view words;
    std::string TMachineFacts::*fact;
};

constexpr TFactRow factRows[] = {
    {"system UUID", &TMachineFacts::uuid},
    {"serial number", &TMachineFacts::serial},
    {"name", &TMachineFacts::name},
};

void AppendFacts(const TSite& site, const TFactRow& row, std::vector<TDuplicate>& duplicates) {
    std::map<std::string, std::vector<std::size_t>> machines;
    for (std::size_t i = 0; i < site.machines.size(); ++i) {
        if (const std::string& value = site.machines[i].machine.facts.*row.fact; !value.empty()) {
            machines[value].push_back(i);
        }
    }
    for (auto& [value, indices] : machines) {
        if (indices.size() > 1) {
            duplicates.push_back({std::string(row.words), value, std::move(indices)});
        }
    }
}

// The present places of one part.
struct TPlaces {
    std::uint32_t words = 0;
    std::set<std::size_t> machines{};
};

// Parts are in the order of their normalized identity, so equal identities are near each other.
void AppendParts(const TSite& site, std::vector<TDuplicate>& duplicates) {
    std::map<std::pair<std::string, std::uint32_t>, TPlaces> places;
    const auto flush = [&] {
        for (auto& [key, place] : places) {
            if (place.machines.size() > 1) {
                duplicates.push_back(
                    {site.texts[place.words], key.first, {place.machines.begin(), place.machines.end()}});
            }
        }
        places.clear();
    };
    std::string current;
    for (const TPart& part : site.parts) {
        if (!part.isUnique || part.until != open) {
            continue;
        }
        if (std::string normalized = NormalizeIdentity(part.identity); normalized != current) {
            flush();
            current = std::move(normalized);
        }
        TPlaces& place = places[{part.identity, part.kind}];
        place.words = part.words;
        place.machines.insert(part.machine);
    }
    flush();
}

}  // namespace

std::vector<TDuplicate> FindDuplicates(const TSite& site) {
    std::vector<TDuplicate> duplicates;
    for (const TFactRow& row : factRows) {
        AppendFacts(site, row, duplicates);
    }
    AppendParts(site, duplicates);
    return duplicates;
}

}  // namespace NFLEET
