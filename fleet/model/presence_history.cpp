#include "fleet/model/presence_history.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

using TRows = std::vector<TPresence>;
using TRow = TRows::iterator;

bool IsBefore(const TPresence& left, const TPresence& right) {
    return std::tie(left.resource, left.since) < std::tie(right.resource, right.since);
}

bool IsSameState(const TPresence& left, const TPresence& right) {
    return left.version == right.version && left.identity == right.identity;
}

// Returns the end of the rows of the resource of `row`.
template <typename TIterator>
TIterator FindGroupEnd(TIterator row, TIterator end) {
    return std::find_if(row, end, [&](const TPresence& other) { return other.resource != row->resource; });
}

// Appends a row of a resource whose rows are appended in order, and unites it with the row before it if that
// one is the same state.
void Append(TPresence row, TSeconds since, TSeconds until, std::size_t groupBegin, TRows& rows) {
    if (since >= until) {
        return;
    }
    if (rows.size() > groupBegin && rows.back().until == since && IsSameState(rows.back(), row)) {
        rows.back().until = until;
        return;
    }
    row.since = since;
    row.until = until;
    rows.push_back(std::move(row));
}

bool IsInventoryBefore(const TInventory& inventory, TSeconds time) {
    return inventory.time < time;
}

}  // namespace

TPresenceHistory::TPresenceHistory(TScopeState state)
    : place_(state.place), inventories_(std::move(state.inventories)), stored_(std::move(state.presences)) {
    Normalize();
}

void TPresenceHistory::Normalize() {
    std::ranges::sort(stored_, IsBefore);
    rows_.clear();
    rows_.reserve(stored_.size());
    for (auto row = stored_.begin(); row != stored_.end();) {
        const auto end = FindGroupEnd(row, stored_.end());
        const std::size_t groupBegin = rows_.size();
        for (; row != end; ++row) {
            const auto next = std::next(row);
            Append(*row, row->since, next == end ? row->until : std::min(row->until, next->since), groupBegin,
                   rows_);
        }
    }
}

// The first inventory holds since always, the last one stays open.
TPresenceHistory::TSpan TPresenceHistory::FindSpan(TSeconds time) const {
    const auto at = std::lower_bound(inventories_.begin(), inventories_.end(), time, IsInventoryBefore);
    const auto next = std::find_if(at, inventories_.end(),
                                   [&](const TInventory& inventory) { return inventory.time > time; });
    return {at == inventories_.begin() ? always : time, next == inventories_.end() ? open : next->time};
}

bool TPresenceHistory::Insert(TInventory inventory, std::vector<TPresence> resources) {
    inventory.place = place_;
    const auto at =
        std::lower_bound(inventories_.begin(), inventories_.end(), inventory.time, IsInventoryBefore);
    const bool exists = at != inventories_.end() && at->time == inventory.time;
    if (exists && at->digest >= inventory.digest) {
        return false;
    }
    const TSpan span = FindSpan(inventory.time);
    if (exists) {
        *at = std::move(inventory);
    } else {
        inventories_.insert(at, std::move(inventory));
    }
    SetSpan(span, std::move(resources));
    return true;
}

bool TPresenceHistory::Remove(TSeconds time) {
    const auto at = std::lower_bound(inventories_.begin(), inventories_.end(), time, IsInventoryBefore);
    if (at == inventories_.end() || at->time != time) {
        return false;
    }
    const TSpan span = FindSpan(time);
    TRows resources;
    if (at != inventories_.begin()) {
        resources = GetResources(std::prev(at)->time);
    } else if (std::next(at) != inventories_.end()) {
        resources = GetResources(std::next(at)->time);
    }
    inventories_.erase(at);
    SetSpan(span, std::move(resources));
    return true;
}

std::vector<TPresence> TPresenceHistory::GetResources(TSeconds time) const {
    TRows resources;
    std::ranges::copy_if(rows_, std::back_inserter(resources),
                         [&](const TPresence& row) { return row.since <= time && time < row.until; });
    return resources;
}

// Merges the rows, which are in order of their resources, with the resources that hold in the span.
void TPresenceHistory::SetSpan(const TSpan& span, std::vector<TPresence> resources) {
    TRows merged;
    merged.reserve(std::max(rows_.size(), resources.size()));
    TRow row = rows_.begin();
    TRow resource = resources.begin();
    while (row != rows_.end() || resource != resources.end()) {
        const bool hasOld =
            row != rows_.end() && (resource == resources.end() || row->resource <= resource->resource);
        const bool hasNew = resource != resources.end() && (!hasOld || resource->resource == row->resource);
        const TRow end = hasOld ? FindGroupEnd(row, rows_.end()) : row;
        const std::size_t groupBegin = merged.size();
        for (TRow old = row; old != end; ++old) {
            Append(*old, old->since, std::min(old->until, span.begin), groupBegin, merged);
        }
        if (hasNew) {
            resource->place = place_;
            Append(std::move(*resource), span.begin, span.end, groupBegin, merged);
            ++resource;
        }
        for (; row != end; ++row) {
            const TSeconds since = std::max(row->since, span.end);
            const TSeconds until = row->until;
            Append(std::move(*row), since, until, groupBegin, merged);
        }
    }
    rows_ = std::move(merged);
}

void TPresenceHistory::AppendChanges(std::vector<TPresence>& written,
                                     std::vector<TPresenceKey>& removed) const {
    auto stored = stored_.begin();
    for (auto row = rows_.begin(); row != rows_.end();) {
        const auto end = FindGroupEnd(row, rows_.end());
        const auto first = static_cast<std::ptrdiff_t>(written.size());
        for (; row != end; ++row) {
            for (; stored != stored_.end() && IsBefore(*stored, *row); ++stored) {
                removed.push_back(stored->GetKey());
            }
            const bool exists = stored != stored_.end() && !IsBefore(*row, *stored);
            if (!exists || *stored != *row) {
                written.push_back(*row);
            }
            if (exists && stored->type != row->type) {
                removed.push_back(stored->GetKey());
            }
            stored += exists ? 1 : 0;
        }
        std::reverse(written.begin() + first, written.end());
    }
    for (; stored != stored_.end(); ++stored) {
        removed.push_back(stored->GetKey());
    }
}

}  // namespace NFLEET
