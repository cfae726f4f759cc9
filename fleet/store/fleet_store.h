// The contract of an engine that stores a fleet. Engines store and find rows; every rule (who a machine is,
// how an inventory changes the presence of resources, what an answer looks like) is in code that all engines
// share, so that all give the same answers.
//
// Failure language: TStoreError, whose message is one line and names the store.
// Threads: an object must not be used by two threads at the same time. Several processes may use one store.
#pragma once

#include "fleet/model/rows.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace NFLEET {

/// A store that cannot be opened, read or written. The message is one line.
class TStoreError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Changes that belong together. An engine without transactions applies the members in the order in which
/// they are declared, and the elements of `presences` in their order: after any part of them, the state is
/// that before or after the change, and writing the batch again completes it. An inventory's row is the mark
/// that it was stored.
struct TBatch {
    std::vector<TVersion> versions{};    ///< may be known already
    std::vector<TPresence> presences{};  ///< inserted, or replaced if the key exists
    std::vector<TPresenceKey> removedPresences{};
    std::vector<TInventoryKey> removedInventories{};
    std::vector<TMachineScope> removedHeads{};
    std::vector<TMachineId> removedMachines{};  ///< all their other rows are removed as well
    std::vector<TAlias> aliases{};              ///< inserted or replaced
    std::vector<TMachine> machines{};           ///< inserted or replaced
    std::vector<THead> heads{};                 ///< inserted or replaced
    std::vector<TInventory> inventories{};      ///< inserted or replaced
    std::vector<TSource> sources{};             ///< inserted or replaced, by place

    bool IsEmpty() const {
        return versions.empty() && presences.empty() && removedPresences.empty() &&
               removedInventories.empty() && removedHeads.empty() && removedMachines.empty() &&
               aliases.empty() && machines.empty() && heads.empty() && inventories.empty() && sources.empty();
    }
};

/// Which inventories to read; conditions that are absent hold for all.
struct TInventoryQuery {
    std::optional<TMachineId> machine{};
    std::optional<EScope> scope{};
    TSeconds since = std::numeric_limits<TSeconds>::min();  ///< inclusive
    TSeconds until = open;                                  ///< exclusive
    bool newestOnly = false;  ///< of each machine and scope, among those in the span
    bool withVolatileValues = false;
};

/// Which changes to read.
struct TChangeQuery {
    std::optional<TMachineId> machine{};  ///< absent for all machines
    TSeconds since = 0;                   ///< exclusive
    TSeconds until = open;                ///< inclusive; `open` includes every change
    std::vector<std::string> types{};     ///< of resources; empty for all types
};

/// Which versions to count.
struct TCountQuery {
    std::optional<std::string> model{};  ///< absent for all models
    std::vector<std::string> types{};    ///< empty for all types
};

/// The number of machines of a model whose present state has resources in a version.
struct TVersionCount {
    std::string model;
    std::string type;
    TDigest version;
    std::uint64_t machines = 0;   ///< different machines
    std::uint64_t resources = 0;  ///< a machine may have several

    bool operator==(const TVersionCount&) const = default;
};

/// The number of resources of a type in the present state of a machine.
struct TPartCount {
    TMachineId machine;
    std::string type;
    std::uint64_t resources = 0;

    bool operator==(const TPartCount&) const = default;
};

/// A value of a query's result.
using TSqlValue = std::variant<std::monostate, std::int64_t, double, std::string>;

/// Receives the result of a query: the column names first, then row by row. Returning false ends the query.
class ISqlRows {
  public:
    virtual ~ISqlRows() = default;

    virtual void BeginRows(const std::vector<std::string>& columns) = 0;
    virtual bool AddRow(const std::vector<TSqlValue>& values) = 0;
};

/// A store of one fleet. Results are in ascending order of their keys (digests as unsigned bytes, texts as
/// bytes) unless a comment gives another order.
class IFleetStore {
  public:
    virtual ~IFleetStore() = default;

    /// Returns the name of the store for messages, such as its URL without a password.
    virtual std::string GetName() const = 0;
    /// Returns the version of the stored schema; 0 for a store without tables.
    virtual int GetSchemaVersion() = 0;
    /// Makes the tables, or brings those of an older version up to date. Idempotent.
    /// Errors: throws TStoreError for tables of a newer version or of another program, which stay unchanged.
    virtual void Migrate() = 0;

    // Loading.

    /// Begins a batch. Everything that is read until Write or AbandonBatch is up to date when the batch is
    /// written: the engine keeps other loaders out, or finds out in Write that they came first.
    virtual void BeginBatch() = 0;
    /// Applies the changes and ends the batch. Errors: throws TStoreError; the batch is then abandoned.
    virtual void Write(const TBatch& batch) = 0;
    /// Ends a batch without changes. Does nothing outside a batch.
    virtual void AbandonBatch() noexcept = 0;

    /// Returns those of the aliases that exist.
    virtual std::vector<TAlias> FindAliases(std::span<const TDigest> names) = 0;
    /// Returns the aliases of a machine.
    virtual std::vector<TAlias> ReadAliasesOf(const TMachineId& machine) = 0;
    /// Returns the aliases of the machines that were merged, into one machine or into any; none of names in
    /// inventories.
    virtual std::vector<TAlias> ReadMergedAliases(const std::optional<TMachineId>& into) = 0;
    /// Returns those of the machines that exist.
    virtual std::vector<TMachine> FindMachines(std::span<const TMachineId> ids) = 0;
    /// Returns the heads of these machines in all scopes.
    virtual std::vector<THead> ReadHeads(std::span<const TMachineId> machines) = 0;
    /// Returns those of the places to which a batch may have been written in part, in the order of `places`.
    /// Their heads need not belong to their presences, and inventories may be missing or not the newest ones.
    virtual std::vector<TMachineScope> FindUnfinished(std::span<const TMachineScope> places) = 0;
    /// Returns those of the inventories that are stored, without volatile values.
    virtual std::vector<TInventory> FindInventories(std::span<const TInventoryKey> keys) = 0;
    /// Returns one state for each place, in the order of `places`; an empty one if nothing is stored.
    virtual std::vector<TScopeState> ReadStates(std::span<const TMachineScope> places) = 0;
    /// Returns the sources that are stored at these places.
    virtual std::vector<TSource> FindSources(std::span<const std::uint64_t> places) = 0;
    /// Returns those of the versions that are stored.
    virtual std::vector<TDigest> FindKnownVersions(std::span<const TDigest> versions) = 0;
    /// Removes versions that no presence refers to. Returns their number; nullopt if the engine does that by
    /// itself.
    virtual std::optional<std::uint64_t> RemoveUnusedVersions() = 0;

    /// Everything that is read until EndReading is from one moment, if the engine can give that. It cannot
    /// begin within a batch.
    virtual void BeginReading() {}
    /// Does nothing if nothing was begun.
    virtual void EndReading() noexcept {}

    // Asking. "The present state" of a machine is that of its newest inventories in the scopes of
    // IsCurrentScope.

    /// Returns every machine.
    virtual std::vector<TMachine> ReadMachines() = 0;
    /// Returns the machines that a text names; IsNamed (fleet/model/named_machine.h) is the rule. The time
    /// does not depend on the number of other machines, if the engine can give that.
    virtual std::vector<TMachine> FindNamedMachines(std::string_view text) = 0;
    virtual std::vector<TInventory> ReadInventories(const TInventoryQuery& query) = 0;
    /// Returns the resources of a machine and scope that hold at a time; `open - 1` is the present.
    virtual std::vector<TPresence> ReadPresences(const TMachineScope& place, TSeconds at) = 0;
    /// Returns the rows that begin (since) or end (until) in the span. Rows that begin `always` or end `open`
    /// do so without a change.
    virtual std::vector<TPresence> ReadChanges(const TChangeQuery& query) = 0;
    /// Returns every row with a resource of which one identifying value is equal to `value`.
    virtual std::vector<TPresence> FindIdentity(std::string_view value) = 0;
    /// Counts versions in the present state of the machines; ordered by model, type and version.
    virtual std::vector<TVersionCount> CountVersions(const TCountQuery& query) = 0;
    /// Counts the resources of the types of a query, which are not empty, in the present state of each
    /// machine; ordered by machine and type. A machine without resources of a type has no count.
    virtual std::vector<TPartCount> CountParts(const TCountQuery& query) = 0;
    /// Returns the machines whose present state has a resource in one of the versions.
    virtual std::vector<TMachineId> FindMachinesWith(std::span<const TDigest> versions) = 0;
    /// Returns the rows of the present state that have one of the versions, of machines of a model or of all.
    virtual std::vector<TPresence> FindPresences(std::span<const TDigest> versions,
                                                 const std::optional<std::string>& model) = 0;
    /// Returns those of the versions that are stored.
    virtual std::vector<TVersion> ReadVersions(std::span<const TDigest> versions) = 0;
    /// Runs one query in the engine's own language. Errors: throws TStoreError for a text that is malformed,
    /// would write, or has more than one statement.
    virtual void RunSql(std::string_view text, ISqlRows& rows) = 0;
};

/// Reads of one moment, for the lifetime of this object. The store must outlive it.
class TReading {
  public:
    explicit TReading(IFleetStore& store) : store_(store) { store_.BeginReading(); }
    ~TReading() { store_.EndReading(); }
    TReading(const TReading&) = delete;
    TReading& operator=(const TReading&) = delete;

  private:
    IFleetStore& store_;
};

}  // namespace NFLEET
