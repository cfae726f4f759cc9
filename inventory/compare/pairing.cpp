#include "inventory/compare/pairing.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace NINVENTORY {
namespace {

using TResources = std::span<const TResource* const>;
using TIndices = std::vector<std::size_t>;
using TKey = std::function<std::string(const TResource& resource)>;

constexpr std::size_t unpaired = std::numeric_limits<std::size_t>::max();

std::string ToKey(const std::vector<TFact>& facts) {
    std::string key;
    for (const TFact& fact : facts) {
        key.append(fact.name).append("=").append(std::to_string(fact.value.size())).append(":");
        key += fact.value;
    }
    return key;
}

// The resources of one side with their partners on the other side.
struct TSide {
    explicit TSide(TResources all) : resources(all), partners(all.size(), unpaired) {}

    TIndices ListUnpaired() const {
        TIndices indices;
        for (std::size_t i = 0; i < partners.size(); ++i) {
            if (partners[i] == unpaired) {
                indices.push_back(i);
            }
        }
        return indices;
    }

    TResources resources;
    TIndices partners;
};

class TPairing {
  public:
    TPairing(TResources before, TResources after, const TPairingRules& rules)
        : rules_(rules), before_(before), after_(after) {}

    std::vector<TPair> Pair() {
        PairIds();
        PartDifferentParts();
        PairSerials();
        PairKinds();
        PairReplacedParts();
        PairPlaces();
        if (rules_.type.isSingleton) {
            PairSingletons();
        }
        return List();
    }

  private:
    using TIndexPair = std::pair<std::size_t, std::size_t>;

    void Join(std::size_t before, std::size_t after) {
        before_.partners[before] = after;
        after_.partners[after] = before;
    }

    // Pairs resources with equal keys: the first with the first, the second with the second. Resources with
    // an empty key stay as they are.
    void PairEqual(const TIndices& before, const TIndices& after, const TKey& makeKey) {
        struct TCandidates {
            TIndices indices;
            std::size_t used = 0;
        };
        std::unordered_map<std::string, TCandidates> candidates;
        for (const std::size_t i : after) {
            std::string key = makeKey(*after_.resources[i]);
            if (!key.empty()) {
                candidates[std::move(key)].indices.push_back(i);
            }
        }
        if (candidates.empty()) {
            return;
        }
        for (const std::size_t i : before) {
            const auto found = candidates.find(makeKey(*before_.resources[i]));
            if (found != candidates.end() && found->second.used < found->second.indices.size()) {
                Join(i, found->second.indices[found->second.used++]);
            }
        }
    }

    void PairEqual(const TKey& makeKey) { PairEqual(before_.ListUnpaired(), after_.ListUnpaired(), makeKey); }

    void PairIds() {
        // Links have no identifiers of their own; their ends identify them.
        const auto isIgnored = rules_.type.isAuxiliary ? TIsIgnored([](std::string_view) { return false; })
                                                       : TIsIgnored([](std::string_view) { return true; });
        const auto makeId = [&](const TResource& resource) {
            return resource.id + "/" + ToKey(GetFacts(resource, rules_.type.places, isIgnored));
        };
        const std::unordered_set<std::string> repeated = ListRepeated(makeId);
        if (!repeated.empty()) {
            PairEqual([&](const TResource& resource) {
                std::string id = makeId(resource);
                return repeated.contains(id) ? id + "/" + rules_.makeContent(resource) : std::string();
            });
        }
        PairEqual(makeId);
    }

    // Returns the keys that several resources of a side have.
    std::unordered_set<std::string> ListRepeated(const TKey& makeKey) const {
        std::unordered_set<std::string> repeated;
        for (const TSide* side : {&before_, &after_}) {
            std::unordered_set<std::string> seen;
            for (const TResource* resource : side->resources) {
                std::string key = makeKey(*resource);
                if (seen.contains(key)) {
                    repeated.insert(std::move(key));
                } else {
                    seen.insert(std::move(key));
                }
            }
        }
        return repeated;
    }

    // An identifier that is made from a place stays the same when the part at the place is replaced.
    void PartDifferentParts() {
        for (std::size_t i = 0; i < before_.partners.size(); ++i) {
            const std::size_t partner = before_.partners[i];
            if (partner != unpaired && AreDifferentParts(rules_.type, *before_.resources[i],
                                                         *after_.resources[partner], rules_.isIgnored)) {
                replaced_.emplace_back(i, partner);
            }
        }
        for (const auto& [before, after] : replaced_) {
            before_.partners[before] = unpaired;
            after_.partners[after] = unpaired;
        }
    }

    std::string MakePlace(const TResource& resource) const {
        return ToKey(GetFacts(resource, rules_.type.places, rules_.isIgnored));
    }

    void PairSerials() {
        for (const std::string_view name : rules_.type.serials) {
            const auto makeSerial = [&](const TResource& resource) {
                return ToKey(GetFacts(resource, {&name, 1}, rules_.isIgnored));
            };
            // Parts that stayed where they were come first.
            PairEqual([&](const TResource& resource) {
                const std::string serial = makeSerial(resource);
                return serial.empty() ? serial : serial + "/" + MakePlace(resource);
            });
            PairEqual(makeSerial);
        }
    }

    // Only their places distinguish parts of one kind, so that they are paired in the
    // order of these.
    void PairKinds() {
        if (rules_.type.kinds.empty()) {
            return;
        }
        const auto makeKind = [&](const TResource& resource) {
            if (!GetFacts(resource, rules_.type.serials, rules_.isIgnored).empty()) {
                return std::string();
            }
            const std::string_view name = "Name";
            const std::string kind = ToKey(GetFacts(resource, {&name, 1}, rules_.isIgnored));
            return kind.empty() ? kind
                                : kind + ToKey(GetFacts(resource, rules_.type.kinds, rules_.isIgnored));
        };
        PairEqual(SortByPlace(before_), SortByPlace(after_), makeKind);
    }

    TIndices SortByPlace(const TSide& side) const {
        std::vector<std::pair<std::string, std::size_t>> places;
        for (const std::size_t i : side.ListUnpaired()) {
            places.emplace_back(MakePlace(*side.resources[i]), i);
        }
        std::ranges::sort(places);
        TIndices sorted;
        std::ranges::transform(places, std::back_inserter(sorted),
                               &std::pair<std::string, std::size_t>::second);
        return sorted;
    }

    void PairReplacedParts() {
        for (const auto& [before, after] : replaced_) {
            if (before_.partners[before] == unpaired && after_.partners[after] == unpaired) {
                Join(before, after);
            }
        }
    }

    // A place that several resources of a side share is not precise enough.
    void PairPlaces() {
        const TIndices before = before_.ListUnpaired();
        const TIndices after = after_.ListUnpaired();
        if (before.empty() || after.empty() || rules_.type.places.empty()) {
            return;
        }
        const auto makePlace = [this](const TResource& resource) { return MakePlace(resource); };
        const std::unordered_set<std::string> shared = ListRepeated(makePlace);
        PairEqual(before, after, [&](const TResource& resource) {
            std::string place = MakePlace(resource);
            return shared.contains(place) ? std::string() : place;
        });
    }

    void PairSingletons() {
        const TIndices before = before_.ListUnpaired();
        const TIndices after = after_.ListUnpaired();
        if (before.size() == 1 && after.size() == 1) {
            Join(before.front(), after.front());
        }
    }

    std::vector<TPair> List() const {
        std::vector<TPair> pairs;
        for (std::size_t i = 0; i < before_.partners.size(); ++i) {
            const TResource& before = *before_.resources[i];
            if (before_.partners[i] == unpaired) {
                pairs.push_back({&before, nullptr});
                continue;
            }
            const TResource& after = *after_.resources[before_.partners[i]];
            pairs.push_back(
                {&before, &after, AreDifferentParts(rules_.type, before, after, rules_.isIgnored)});
        }
        for (const std::size_t i : after_.ListUnpaired()) {
            pairs.push_back({nullptr, after_.resources[i]});
        }
        return pairs;
    }

    const TPairingRules& rules_;
    TSide before_;
    TSide after_;
    std::vector<TIndexPair> replaced_;  // paired by identifier, but different parts
};

}  // namespace

std::vector<TPair> PairResources(TResources before, TResources after, const TPairingRules& rules) {
    return TPairing(before, after, rules).Pair();
}

}  // namespace NINVENTORY
