// All presences of a machine and scope as one row of ClickHouse, and what such rows have in common.
//
// ClickHouse replaces rows as a whole and merges them in order of their keys, so that a row for each machine
// and scope is faster to read than a row for each resource, and is never written in part. Machines of one
// model are mostly made of the same parts, so a row refers to a list of them.
#pragma once

#include "fleet/model/rows.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// The types and versions of the resources that a machine has at present, in the order of its row.
struct TComposition {
    struct TElement {
        std::string type;
        TDigest version;
    };

    TDigest digest;  ///< digest of the elements; zero if there are none
    std::vector<TElement> elements;
};

/// The presences of a machine and scope, of all times, in the order of SortForRow.
struct TPresenceRow {
    TMachineScope place;
    std::vector<TPresence> presences;
    TDigest composition;  ///< of those that are open
};

/// Returns the number of presences that are open; they come first.
std::size_t CountOpen(std::span<const TPresence> presences);

/// Makes the composition of presences in the order of SortForRow.
TComposition MakeComposition(std::span<const TPresence> presences);

/// Gives open presences their types and versions. Returns false for a composition of another number of them.
bool Complete(const TComposition& composition, std::vector<TPresence>& presences);

/// Applies the part of a batch that belongs to a place: presences are inserted or replace those with their
/// key; then keys are removed.
void ApplyChanges(std::span<const TPresence> written, std::span<const TPresenceKey> removed,
                  std::vector<TPresence>& presences);

/// Orders presences as a row has them: those that are open first, then by type and version, so that machines
/// with the same parts have the same composition.
void SortForRow(std::vector<TPresence>& presences);

/// Returns the newest time at which one of the presences begins or ends; `always` if none does.
TSeconds GetNewestChange(std::span<const TPresence> presences);

/// Returns an identity as JSON text; "" for one without properties. The first value that is the identifier of
/// the resource is the byte 1, because firmware has no other identity for many parts.
std::string FormatIdentity(const TIdentity& identity, const TDigest& resource);

/// Parses the output of FormatIdentity; nullopt for any other text.
std::optional<TIdentity> ParseIdentity(std::string_view text, const TDigest& resource);

/// Returns a text that FormatIdentity writes for every identity with this value, unless the value is the
/// identifier of the resource.
std::string FormatSearchedValue(std::string_view value);

/// The part of the volatile values of an inventory that many inventories share, also those of other machines.
struct TVolatileLayout {
    TDigest digest;                      ///< digest of everything that counts; zero if there are no values
    std::vector<std::uint32_t> numbers;  ///< lengths of the runs of values of one resource
    std::vector<TVolatileValue> values;  ///< their resources and values do not count
};

/// Makes the layout of the volatile values of an inventory.
TVolatileLayout MakeLayout(const std::vector<TVolatileValue>& values);

/// Adds the layout and the resources to values that have nothing but values. Returns false for a layout of
/// other values.
bool Complete(const TVolatileLayout& layout, const std::vector<TDigest>& resources,
              std::vector<TVolatileValue>& values);

}  // namespace NFLEET
