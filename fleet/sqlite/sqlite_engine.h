// The engine: the contract of a store on one connection.
#pragma once

#include "fleet/model/stored_values.h"
#include "fleet/sqlite/connection.h"
#include "fleet/sqlite/tables.h"
#include "fleet/store/fleet_store.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace NFLEET {

class TSqliteEngine final : public IFleetStore {
  public:
    TSqliteEngine(const std::string& path, std::int64_t maxPages);

    std::string GetName() const override { return connection_.GetPath(); }
    int GetSchemaVersion() override;
    void Migrate() override;

    void BeginBatch() override;
    void Write(const TBatch& batch) override;
    void AbandonBatch() noexcept override;
    std::vector<TAlias> FindAliases(std::span<const TDigest> names) override;
    std::vector<TAlias> ReadAliasesOf(const TMachineId& machine) override;
    std::vector<TAlias> ReadMergedAliases(const std::optional<TMachineId>& into) override;
    std::vector<TMachine> FindMachines(std::span<const TMachineId> ids) override;
    std::vector<THead> ReadHeads(std::span<const TMachineId> machines) override;
    // Batches are transactions.
    std::vector<TMachineScope> FindUnfinished(std::span<const TMachineScope> /*places*/) override {
        return {};
    }
    std::vector<TInventory> FindInventories(std::span<const TInventoryKey> keys) override;
    std::vector<TScopeState> ReadStates(std::span<const TMachineScope> places) override;
    std::vector<TSource> FindSources(std::span<const std::uint64_t> places) override;
    std::vector<TDigest> FindKnownVersions(std::span<const TDigest> versions) override;
    std::optional<std::uint64_t> RemoveUnusedVersions() override;

    void BeginReading() override { connection_.Execute("BEGIN"); }
    void EndReading() noexcept override { AbandonBatch(); }
    std::vector<TMachine> ReadMachines() override;
    std::vector<TMachine> FindNamedMachines(std::string_view text) override;
    std::vector<TInventory> ReadInventories(const TInventoryQuery& query) override;
    std::vector<TPresence> ReadPresences(const TMachineScope& place, TSeconds at) override;
    std::vector<TPresence> ReadChanges(const TChangeQuery& query) override;
    std::vector<TPresence> FindIdentity(std::string_view value) override;
    std::vector<TVersionCount> CountVersions(const TCountQuery& query) override;
    std::vector<TPartCount> CountParts(const TCountQuery& query) override;
    std::vector<TMachineId> FindMachinesWith(std::span<const TDigest> versions) override;
    std::vector<TPresence> FindPresences(std::span<const TDigest> versions,
                                         const std::optional<std::string>& model) override;
    std::vector<TVersion> ReadVersions(std::span<const TDigest> versions) override;
    void RunSql(std::string_view text, ISqlRows& rows) override;

  private:
    /// A machine as questions about the present state need it.
    struct TCurrentMachine {
        std::int64_t id;
        TMachineId digest;
        std::string model;
        bool usesSnapshot;
    };

    /// Versions by number, and the numbers of their types, of which each is there once.
    struct TWantedVersions {
        std::unordered_map<std::int64_t, TDigest> versions{};
        std::vector<std::int64_t> types{};
    };

    /// A row of the table in which identities are found.
    struct TPartRow {
        std::int64_t search = 0;
        std::int64_t machine = 0;
        std::int64_t scope = 0;
        std::int64_t type = 0;
        std::int64_t resource = 0;

        auto operator<=>(const TPartRow&) const = default;
    };

    /// The statements; prepared when first used. Errors: throws TStoreError for tables of another version.
    TTables& GetTables();

    std::int64_t InsertResource(const TDigest& digest);
    std::int64_t InsertLayout(const std::vector<TVolatileValue>& values);
    std::int64_t InsertForm(const std::vector<TVolatileValue>& values);
    TStoredLayout ReadLayout(std::int64_t id);
    std::int64_t RequireMachine(const TMachineId& machine);
    std::int64_t RequireVersion(const TDigest& version);
    void WriteVersion(const TVersion& version);
    void WriteProperty(std::int64_t version, std::int64_t position, const TVersionProperty& stored);
    TPartRow WritePresence(const TPresence& presence);
    void WritePresences(const std::vector<TPresence>& presences);
    void InsertResources(const std::vector<TPresence>& presences);
    void WriteParts(std::vector<TPartRow> parts);
    void MoveRecentRows(std::int64_t limit);
    void WriteMachine(const TMachine& machine);
    void WriteHead(const THead& head);
    void WriteInventory(const TInventory& inventory);
    void RemovePresence(const TPresenceKey& key);
    void RemoveMachine(const TMachineId& machine);
    void Apply(const TBatch& batch);

    TScopeState ReadState(const TMachineScope& place);
    std::vector<std::int64_t> FindTypes(const std::vector<std::string>& types);
    std::vector<TPresence> ReadRows(const TMachineScope& place, TSeconds from, TSeconds to);
    std::vector<TPresence> ReadSelected(TStatement& statement);
    TIdentity ParseIdentity(std::string_view text) const;
    TVersion ReadVersion(std::int64_t id, const TDigest& digest);
    TWantedVersions FindWanted(std::span<const TDigest> versions);
    std::vector<TCurrentMachine> ListCurrent(const std::optional<std::string>& model);
    void ForEachCurrent(const std::optional<std::string>& model, const std::vector<std::int64_t>& types,
                        std::string_view columns,
                        const std::function<void(const TCurrentMachine&, TStatement& row)>& action);

    TConnection connection_;
    std::unique_ptr<TTables> tables_;
    std::int64_t dataVersion_ = 0;
    std::int64_t recentRows_ = -1;  ///< largest possible number; negative if they must be counted
};

}  // namespace NFLEET
