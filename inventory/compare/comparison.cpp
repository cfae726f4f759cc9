#include "inventory/compare/comparison.h"

#include "inventory/compare/kernel_names.h"
#include "inventory/compare/pairing.h"
#include "inventory/compare/part.h"
#include "inventory/compare/resource_order.h"
#include "inventory/model/meaning.h"
#include "inventory/model/resource_type.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <tuple>
#include <utility>

namespace NINVENTORY {
namespace {

using TResources = std::vector<const TResource*>;

constexpr std::array<std::string_view, 6> changeWords{"replaced", "moved",   "removed",
                                                      "added",    "updated", "changed"};

struct TSides {
    TResources before, after;
};

// The resources of a type on both sides, in the order of SortResources.
using TTypes = std::map<std::string_view, TSides>;

TTypes SortIntoTypes(const TInventory& before, const TInventory& after) {
    TTypes types;
    for (const TResource& resource : before.resources) {
        types[resource.type].before.push_back(&resource);
    }
    for (const TResource& resource : after.resources) {
        types[resource.type].after.push_back(&resource);
    }
    for (auto& [type, sides] : types) {
        SortResources(sides.before);
        SortResources(sides.after);
    }
    return types;
}

std::size_t GetRank(std::string_view type) {
    const auto rows = GetResourceTypes();
    return static_cast<std::size_t>(std::ranges::find(rows, type, &TResourceType::type) - rows.begin());
}

bool IsVolatile(const TResource& resource, const TProperty& property) {
    const TMeaning* const meaning = FindMeaning(resource.type, property.name);
    return meaning != nullptr && meaning->isVolatile;
}

bool IsAbsent(const TProperty* property) {
    return property == nullptr || property->shape == EShape::null;
}

// Calls `visit` with the properties of one name of both resources, one of which may be null. Several of one
// name are matched in their order.
template <typename TVisit>
void ForEachMatch(const TResource& before, const TResource& after, const TVisit& visit) {
    const bool isAligned =
        std::ranges::equal(before.properties, after.properties, {}, &TProperty::name, &TProperty::name);
    if (isAligned) {
        for (std::size_t i = 0; i < before.properties.size(); ++i) {
            visit(&before.properties[i], &after.properties[i]);
        }
        return;
    }
    const auto olds = SortProperties(before);
    const auto news = SortProperties(after);
    auto left = olds.begin();
    auto right = news.begin();
    while (left != olds.end() || right != news.end()) {
        const int order = left == olds.end()    ? 1
                          : right == news.end() ? -1
                                                : (*left)->name.compare((*right)->name);
        visit(order <= 0 ? *left : nullptr, order >= 0 ? *right : nullptr);
        left += order <= 0 ? 1 : 0;
        right += order >= 0 ? 1 : 0;
    }
}

// Compares the resources of one type.
class TTypeComparison {
  public:
    /// A source is that of the type in an inventory that may lack resources; else null.
    struct TUnknown {
        const NVORHOST::TValueSource* before;
        const NVORHOST::TValueSource* after;
    };

    TTypeComparison(const TSides& sides, std::string_view type, const TUnknown& unknown,
                    const TComparisonSettings& settings, TComparison& result)
        : sides_(sides),
          type_(type),
          unknown_(unknown),
          partType_(GetPartType(type)),
          settings_(settings),
          result_(result),
          isIgnored_([this](std::string_view name) { return IsIgnored(name); }) {}

    void Compare() {
        const std::size_t first = result_.differences.size();
        const TPairingRules rules{partType_, isIgnored_, [this](const TResource& resource) {
                                      return MakeComparedContent(resource);
                                  }};
        std::size_t unchanged = 0;
        for (const TPair& pair : PairResources(sides_.before, sides_.after, rules)) {
            unchanged += AddDifference(pair) ? 0 : 1;
        }
        if (unchanged > 0) {
            result_.unchanged.push_back({type_, unchanged});
        }
        for (const auto& [property, isInNew] : oneSided_) {
            result_.oneSided.push_back({type_, property, isInNew});
        }
        Sort(std::span(result_.differences).subspan(first));
    }

  private:
    bool IsIgnored(std::string_view property) const {
        return std::ranges::any_of(settings_.ignored, [&](const TIgnored& ignored) {
            return ignored.type == type_ && ignored.property == property;
        });
    }

    std::string MakeComparedContent(const TResource& resource) const {
        TResource compared;
        for (const TProperty& property : resource.properties) {
            if (!IsIgnored(property.name) && (settings_.comparesAll || !IsVolatile(resource, property))) {
                compared.properties.push_back(property);
            }
        }
        return MakeContent(compared);
    }

    // Returns false if the resource is unchanged.
    bool AddDifference(const TPair& pair) {
        if (const auto* const source = FindUnknown(pair)) {
            const bool isInNew = pair.after == nullptr;
            result_.notKnown.push_back({isInNew ? pair.before : pair.after, nullptr, source, isInNew});
            return true;
        }
        if (pair.before == nullptr || pair.after == nullptr) {
            result_.differences.push_back(
                {.change = pair.before == nullptr ? EChange::added : EChange::removed,
                 .before = pair.before,
                 .after = pair.after});
            return true;
        }
        TDifference difference{.before = pair.before, .after = pair.after};
        ForEachMatch(*pair.before, *pair.after, [&](const TProperty* before, const TProperty* after) {
            if (IsDifferent(pair, before, after)) {
                difference.properties.push_back({before, after});
            }
        });
        if (difference.properties.empty() && !HasAnotherId(pair)) {
            return false;
        }
        difference.change = FindChange(pair);
        SortLikeNew(difference);
        result_.differences.push_back(std::move(difference));
        return true;
    }

    // Returns the reason why one side of a pair is missing; null if it is not there.
    const NVORHOST::TValueSource* FindUnknown(const TPair& pair) const {
        if (pair.before != nullptr && pair.after != nullptr) {
            return nullptr;
        }
        return pair.after == nullptr ? unknown_.after : unknown_.before;
    }

    // A machine whose board was replaced, and a system with another name, have properties that differ.
    bool HasAnotherId(const TPair& pair) const {
        return pair.before->id != pair.after->id && (settings_.comparesAll || !partType_.isSingleton);
    }

    bool IsDifferent(const TPair& pair, const TProperty* before, const TProperty* after) {
        if (before != nullptr && after != nullptr && *before == *after) {
            return false;
        }
        const TProperty& known = before != nullptr ? *before : *after;
        if (IsIgnored(known.name)) {
            return false;
        }
        if (IsNotKnown(pair, before, after)) {
            return false;
        }
        if (settings_.comparesAll) {
            return true;
        }
        if (IsSameToPeople(pair, before, after)) {
            return false;
        }
        if (IsVolatile(*pair.before, known)) {
            ++result_.volatileDifferences;
            return false;
        }
        if (IsKnownToOneSide(before, after)) {
            return false;
        }
        return true;
    }

    // A value that could not be looked at is neither gone nor new.
    bool IsNotKnown(const TPair& pair, const TProperty* before, const TProperty* after) {
        using NVORHOST::EValueStatus;
        if (IsAbsent(before) == IsAbsent(after)) {
            return false;
        }
        const bool isInNew = IsAbsent(after);
        const TProperty* const known = isInNew ? before : after;
        const auto* const source = (isInNew ? pair.after : pair.before)->FindSource(known->name);
        constexpr EValueStatus unanswered[] = {EValueStatus::denied, EValueStatus::asleep,
                                               EValueStatus::timedOut, EValueStatus::unread};
        if (source == nullptr || std::ranges::find(unanswered, source->status) == std::end(unanswered)) {
            return false;
        }
        result_.notKnown.push_back({isInNew ? pair.before : pair.after, known, source, isInNew});
        return true;
    }

    bool IsSameToPeople(const TPair& pair, const TProperty* before, const TProperty* after) const {
        if (IsAbsent(before) || IsAbsent(after)) {
            return IsAbsent(before) && IsAbsent(after);
        }
        if (before->values == after->values) {
            return true;
        }
        if (before->values.size() != 1 || after->values.size() != 1) {
            return false;
        }
        const std::string& old = before->values.front();
        const std::string& current = after->values.front();
        if (old == pair.before->id && current == pair.after->id) {
            return true;  // the identifier of the resource once more
        }
        return HasKernelNames(type_, before->name) && HideKernelNames(old) == HideKernelNames(current);
    }

    bool IsKnownToOneSide(const TProperty* before, const TProperty* after) {
        if (!IsAbsent(before) && !IsAbsent(after)) {
            return false;
        }
        const bool isInNew = IsAbsent(before);
        const std::string& name = isInNew ? after->name : before->name;
        if (!knownBefore_) {
            knownBefore_ = ListKnown(sides_.before);
            knownAfter_ = ListKnown(sides_.after);
        }
        if ((isInNew ? knownBefore_ : knownAfter_)->contains(name)) {
            return false;
        }
        oneSided_.emplace(name, isInNew);
        return true;
    }

    static std::set<std::string_view> ListKnown(const TResources& resources) {
        std::set<std::string_view> known;
        for (const TResource* resource : resources) {
            for (const TProperty& property : resource->properties) {
                if (property.shape != EShape::null) {
                    known.insert(property.name);
                }
            }
        }
        return known;
    }

    EChange FindChange(const TPair& pair) const {
        if (pair.isReplacement) {
            return EChange::replaced;
        }
        const auto before = GetFacts(*pair.before, partType_.places, isIgnored_);
        const auto after = GetFacts(*pair.after, partType_.places, isIgnored_);
        if (!before.empty() && !after.empty() && before != after) {
            return EChange::moved;
        }
        return partType_.isFirmware ? EChange::updated : EChange::changed;
    }

    static void SortLikeNew(TDifference& difference) {
        const auto rank = [](const TPropertyDifference& property) {
            return std::tuple(property.after == nullptr,
                              property.after == nullptr ? property.before : property.after);
        };
        std::ranges::sort(difference.properties, {}, rank);  // a resource's properties are one array
    }

    // By change, then by place, name and identifier, which are found once for each difference.
    void Sort(std::span<TDifference> differences) const {
        using TKey = std::tuple<EChange, std::string, std::string_view, std::string_view, std::size_t>;
        std::vector<TKey> keys;
        keys.reserve(differences.size());
        for (std::size_t i = 0; i < differences.size(); ++i) {
            const TResource& resource = differences[i].GetResource();
            keys.emplace_back(differences[i].change, MakePlace(resource), resource.GetText("Name"),
                              resource.id, i);
        }
        std::ranges::sort(keys);
        std::vector<TDifference> sorted;
        sorted.reserve(keys.size());
        for (const TKey& key : keys) {
            sorted.push_back(std::move(differences[std::get<std::size_t>(key)]));
        }
        std::ranges::move(sorted, differences.begin());
    }

    std::string MakePlace(const TResource& resource) const {
        std::string place;
        for (const TFact& fact : GetFacts(resource, partType_.places, isIgnored_)) {
            place += fact.value + " ";
        }
        return place;
    }

    const TSides& sides_;
    std::string_view type_;
    TUnknown unknown_;
    const TPartType& partType_;
    const TComparisonSettings& settings_;
    TComparison& result_;
    TIsIgnored isIgnored_;
    std::optional<std::set<std::string_view>> knownBefore_, knownAfter_;  // found when first needed
    std::set<std::pair<std::string_view, bool>> oneSided_;
};

bool IsIgnoredType(const TComparisonSettings& settings, std::string_view type) {
    return std::ranges::any_of(settings.ignored, [type](const TIgnored& ignored) {
        return ignored.type == type && ignored.property.empty();
    });
}

// Returns true if the type is left out, and notes why.
bool LeaveOut(const TInventory& before, const TInventory& after, std::string_view type,
              const TComparisonSettings& settings, TComparison& result) {
    if (IsIgnoredType(settings, type)) {
        return true;
    }
    if (settings.comparesAll) {
        return false;
    }
    if (GetPartType(type).isAuxiliary) {
        result.hasAuxiliary = true;
        return true;
    }
    if (before.Covers(type) == after.Covers(type)) {
        return false;
    }
    result.oneSided.push_back({.type = type, .isInNew = after.Covers(type)});
    return true;
}

}  // namespace

std::string_view GetWord(EChange change) {
    return changeWords[static_cast<std::size_t>(change)];
}

std::size_t TComparison::Count(EChange change) const {
    return static_cast<std::size_t>(std::ranges::count(differences, change, &TDifference::change));
}

TComparison Compare(const TInventory& before, const TInventory& after, const TComparisonSettings& settings) {
    TComparison result;
    const TTypes types = SortIntoTypes(before, after);
    std::vector<std::string_view> order;
    std::ranges::transform(types, std::back_inserter(order), &TTypes::value_type::first);
    std::ranges::stable_sort(order, {}, GetRank);
    for (const std::string_view type : order) {
        if (!LeaveOut(before, after, type, settings, result)) {
            TTypeComparison(types.at(type), type, {before.FindUnknown(type), after.FindUnknown(type)},
                            settings, result)
                .Compare();
        }
    }
    return result;
}

}  // namespace NINVENTORY
