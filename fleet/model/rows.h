// The rows of a fleet: what an engine stores and answers with. Plain data, the same for every engine.
//
// A machine has inventories, each in a scope and at a moment. A resource of an inventory is divided into
// its version, which has the properties that are neither volatile nor identifying and is stored once for the
// whole fleet, by content; its identity, which has the values of its identifying properties, such as serial
// numbers and addresses; and the values that change by themselves, which belong to the row of the inventory.
//
// A presence is a resource of a machine with one version and one identity over a span of time.
#pragma once

#include "fleet/model/digest.h"
#include "inventory/model/resource.h"

#include <compare>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// Seconds since 1970-01-01T00:00:00Z.
using TSeconds = std::int64_t;

/// `TPresence::since` of a resource that the oldest inventory of its machine and scope already has.
inline constexpr TSeconds always = 0;
/// `TPresence::until` of a resource that the newest inventory of its machine and scope still has.
inline constexpr TSeconds open = std::numeric_limits<TSeconds>::max();

/// The kinds of sources. Each has properties of its own, so the inventories of one are never compared with
/// those of another. The numbers are stored.
enum class EScope : std::uint8_t {
    hardware = 1,           ///< the hardware document
    systemInformation = 2,  ///< the system-information document
    snapshot = 3,           ///< a saved namespace
};

inline constexpr EScope scopes[] = {EScope::hardware, EScope::systemInformation, EScope::snapshot};

/// Returns "hardware", "system-information" or "snapshot".
std::string_view GetWord(EScope scope);

/// The rule that gave a machine its key. The numbers are stored.
enum class EMachineRule : std::uint8_t {
    uuid = 1,               ///< the system UUID, and serial number or address
    systemInformation = 2,  ///< manufacturer, type, model and serial number
    path = 3,               ///< the folder that the inventory was read from
};

/// Returns "uuid", "system information" or "path".
std::string_view GetWord(EMachineRule rule);

/// The digest of the key under which a machine was seen first.
using TMachineId = TDigest;

/// Facts about a machine that its inventories name; empty if unknown.
struct TMachineFacts {
    std::string name;
    std::string vendor;
    std::string model;
    std::string serial;
    std::string uuid;

    bool operator==(const TMachineFacts&) const = default;
};

/// A machine. Facts are those of its newest inventories.
struct TMachine {
    TMachineId id;    ///< digest of its first key
    std::string key;  ///< such as "uuid:4C4C4544-... serial:ABC"
    EMachineRule rule = EMachineRule::path;
    TMachineFacts facts;
    TSeconds first = 0;         ///< time of the oldest inventory
    TSeconds last = 0;          ///< time of the newest inventory
    bool usesSnapshot = false;  ///< the newest inventory is a snapshot, so questions read that scope

    bool operator==(const TMachine&) const = default;
};

/// True if questions about the present state of `machine` read this scope: the snapshot's if the newest
/// moment has one, else both documents'.
constexpr bool IsCurrentScope(bool usesSnapshot, EScope scope) {
    return usesSnapshot == (scope == EScope::snapshot);
}

/// Inventories of machine `from` are stored as inventories of machine `to`, which is not an alias of another
/// one.
struct TAlias {
    TMachineId from;      ///< digest of a key or another name
    std::string fromKey;  ///< key of a machine that was merged; empty if `from` is a name in inventories
    TMachineId to;        ///< `from` itself for a name of several machines, which finds none of them

    bool operator==(const TAlias&) const = default;
};

/// One machine's inventories of one scope.
struct TMachineScope {
    TMachineId machine;
    EScope scope = EScope::hardware;

    auto operator<=>(const TMachineScope&) const = default;
};

/// The newest inventory of a machine and scope.
struct THead {
    TMachineScope place;
    TSeconds time = 0;
    TDigest digest;   ///< of the inventory
    TDigest content;  ///< of all its resources with version and identity
    TMachineFacts facts;

    bool operator==(const THead&) const = default;
};

/// A property that changes by itself, of one inventory.
struct TVolatileValue {
    TDigest resource;
    std::uint32_t position = 0;  ///< 0-based index in the resource's properties
    NINVENTORY::TProperty property;

    bool operator==(const TVolatileValue&) const = default;
};

/// One inventory. Key: place and time.
struct TInventory {
    TMachineScope place;
    TSeconds time = 0;
    TDigest digest;      ///< of the bytes of the file
    std::string source;  ///< path of the file, and of the member of an archive
    std::vector<TVolatileValue> volatileValues{};

    bool operator==(const TInventory&) const = default;
};

struct TInventoryKey {
    TMachineScope place;
    TSeconds time = 0;

    auto operator<=>(const TInventoryKey&) const = default;
};

/// A property of a version.
struct TVersionProperty {
    NINVENTORY::TProperty property;  ///< without values if identifying
    bool isIdentifying = false;      ///< the values are in the identity of each presence

    bool operator==(const TVersionProperty&) const = default;
};

/// A resource without the values that identify it and those that change by themselves.
struct TVersion {
    TDigest digest;  ///< of everything below
    std::string type;
    std::string list;
    /// The identifier as written; absent if it is the resource of the presence in upper-case digits.
    std::optional<std::string> id{};
    std::vector<TVersionProperty> properties;

    bool operator==(const TVersion&) const = default;
};

/// The values of a resource's identifying properties, in the order of its version: one list of values for
/// each.
using TIdentity = std::vector<std::vector<std::string>>;

/// The key of a presence. Rows are in its order: by place, type, resource and time.
struct TPresenceKey {
    TMachineScope place;
    std::string type;
    TDigest resource;
    TSeconds since = always;

    auto operator<=>(const TPresenceKey&) const = default;
};

/// A resource in one version and with one identity, from the inventory at `since` until the first inventory
/// at or after `until`, which differs. It holds for a time t if since <= t < until.
struct TPresence {
    TMachineScope place;
    std::string type;  ///< that of the version
    TDigest resource;
    TSeconds since = always;
    TSeconds until = open;
    TDigest version;
    TIdentity identity{};

    TPresenceKey GetKey() const { return {place, type, resource, since}; }
    bool operator==(const TPresence&) const = default;
};

/// Orders presences by their keys, without copies of these.
void SortByKey(std::vector<TPresence>& presences);

/// Files that are read together, such as those of a folder, of which everything is stored.
struct TSource {
    std::uint64_t place = 0;        ///< digest of the path of the folder, or of a single file
    std::uint64_t state = 0;        ///< digest of names, sizes, times and numbers of the files
    std::uint64_t inventories = 0;  ///< number of inventories in the files

    bool operator==(const TSource&) const = default;
};

/// The inventory rows and presence rows of one machine and scope, in ascending order of time and of key.
struct TScopeState {
    TMachineScope place;
    std::vector<TInventory> inventories;  ///< without volatile values
    std::vector<TPresence> presences;
};

}  // namespace NFLEET
