#include "fleet/clickhouse/clickhouse_store.h"

#include "fleet/clickhouse/client.h"
#include "fleet/clickhouse/row_formats.h"
#include "fleet/clickhouse/schema.h"
#include "fleet/clickhouse/sql_rows.h"
#include "text/shown_text.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

const std::string openText = std::to_string(open);

// The steps of a batch in their order. A later step counts if both write one row.
enum class EStep : TChangeNumber {
    presences,
    removedPresences,
    removedInventories,
    removedHeads,
    removedMachines,
    aliases,
    machines,
    heads,
    inventories,
    versions,
};
constexpr TChangeNumber stepsOfAClaim = 16;

// Inserts return when all servers of a cluster have the rows.
const TStatementSettings insertSettings{{"insert_distributed_sync", "1"}};

template <typename TRow>
std::string MakeTarget(std::string_view columns) {
    return std::string(TRowFormat<TRow>::table) + " (" + std::string(columns) + ", change, removed)";
}

// Returns the query of the rows that count; `condition` begins with "AND" or is empty.
template <typename TRow>
std::string MakeQuery(const std::string& condition, std::string_view columns = TRowFormat<TRow>::columns) {
    return "SELECT " + std::string(columns) + " FROM " + std::string(TRowFormat<TRow>::table) +
           " FINAL WHERE removed = 0 " + condition;
}

// Returns the digests as the table "ids" of a query.
TTemporaryTable MakeIds(std::span<const TDigest> digests) {
    TRowBinaryWriter writer;
    for (const TDigest& digest : digests) {
        writer.Fixed(digest.GetView());
    }
    return {"ids", "id FixedString(16)", writer.GetBytes()};
}

std::string IsAmongIds(const std::string& column) {
    return "AND " + column + " IN (SELECT id FROM ids)";
}

std::string QuoteDigest(const TDigest& digest) {
    return "toFixedString(unhex('" + ToText(digest) + "'), 16)";
}

std::string IsMachine(const TMachineId& machine) {
    return " AND machine = " + QuoteDigest(machine);
}

// The rows of the present state: of each machine that "machine_rows" has, those in the scopes that count.
std::string JoinPresentState(std::string_view columns, const std::string& condition,
                             const std::optional<std::string>& model) {
    const std::string ofModel = model ? " AND model = " + QuoteText(*model) : "";
    return "SELECT " + std::string(columns) +
           " FROM presence_rows FINAL GLOBAL ALL INNER JOIN (SELECT id AS machine, model, uses_snapshot FROM "
           "machine_rows FINAL WHERE removed = 0" +
           ofModel + ") USING machine WHERE removed = 0 AND until = " + openText +
           " AND uses_snapshot = (scope = " + std::to_string(static_cast<int>(EScope::snapshot)) + ")" +
           condition;
}

std::uint64_t HashOfValue(std::string_view value) {
    return TDigestHash()(MakeDigest(value));
}

class TClickHouseStore : public IFleetStore {
  public:
    TClickHouseStore(const TClickHouseAddress& address, THttpCredentials credentials, TClaimTimes times)
        : client_(address, OpenHttp(std::move(credentials))), claim_(client_, times) {}

    ~TClickHouseStore() override { AbandonBatch(); }

    std::string GetName() const override {
        const TClickHouseAddress& address = client_.GetAddress();
        return (address.isEncrypted ? "clickhouses://" : "clickhouse://") + address.GetName();
    }

    int GetSchemaVersion() override;
    void Migrate() override;
    bool IsAtomic() const override { return false; }
    void BeginBatch() override { claim_.Acquire(); }
    void Write(const TBatch& batch) override;
    void AbandonBatch() noexcept override;
    std::vector<TAlias> FindAliases(std::span<const TDigest> names) override;
    std::vector<TAlias> ReadAliasesOf(const TMachineId& machine) override;
    std::vector<TMachine> FindMachines(std::span<const TMachineId> ids) override;
    std::vector<THead> ReadHeads(std::span<const TMachineId> machines) override;
    std::vector<TInventory> FindInventories(std::span<const TInventoryKey> keys) override;
    std::vector<TScopeState> ReadStates(std::span<const TMachineScope> places) override;
    std::vector<TDigest> FindKnownVersions(std::span<const TDigest> versions) override;
    std::optional<std::uint64_t> RemoveUnusedVersions() override;
    std::vector<TMachine> ReadMachines() override;
    std::vector<TInventory> ReadInventories(const TInventoryQuery& query) override;
    std::vector<TPresence> ReadPresences(const TMachineScope& place, TSeconds at) override;
    std::vector<TPresence> ReadChanges(const TChangeQuery& query) override;
    std::vector<TPresence> FindIdentity(std::string_view value) override;
    std::vector<TVersionCount> CountVersions(const TCountQuery& query) override;
    std::vector<TPresence> FindPresences(std::span<const TDigest> versions,
                                         const std::optional<std::string>& model) override;
    std::vector<TVersion> ReadVersions(std::span<const TDigest> versions) override;
    void RunSql(std::string_view text, ISqlRows& rows) override;

  private:
    void RequireNoOtherTables();
    void InsertBatch(const TBatch& batch);
    void InsertIdentities(const std::vector<TPresence>& presences);
    void RemoveMachines(const std::vector<TMachineId>& machines);
    void Insert(const std::string& target, const TRowBinaryWriter& writer);
    TChangeNumber GetChange(EStep step) const {
        return claim_.GetNumber() * stepsOfAClaim + static_cast<TChangeNumber>(step);
    }

    template <typename TRow>
    void InsertRows(const std::vector<TRow>& rows, EStep step);
    template <typename TRow, typename TKey>
    void InsertRemovals(const std::vector<TKey>& keys, EStep step);
    template <typename TRow>
    void RemoveRowsOf(const std::string& machines);
    // Passes the rows of a query to `take`. An empty table means that there are none; the server would read
    // all rows to find that out.
    template <typename TDecode, typename TTake>
    void Select(const std::string& query, TDecode&& decode, TTake&& take,
                const std::optional<TTemporaryTable>& table = std::nullopt) {
        if (!table || !table->rows.empty()) {
            client_.Select(query, std::forward<TDecode>(decode), std::forward<TTake>(take), table);
        }
    }
    // Returns the digests that a query selects, in ascending order.
    std::vector<TDigest> ReadDigests(const std::string& query,
                                     const std::optional<TTemporaryTable>& table = std::nullopt);
    // Returns rows in the order of `order`, a function of a row.
    template <typename TRow, typename TOrder>
    std::vector<TRow> Read(const std::string& query, TOrder order,
                           const std::optional<TTemporaryTable>& table = std::nullopt);
    std::vector<TPresence> ReadPresenceRows(const std::string& query,
                                            const std::optional<TTemporaryTable>& table = std::nullopt) {
        return Read<TPresence>(query, &TPresence::GetKey, table);
    }

    TClickHouseClient client_;
    TLoaderClaim claim_;
};

TInventoryKey KeyOf(const TInventory& inventory) {
    return {inventory.place, inventory.time};
}

template <typename TRow, typename TOrder>
std::vector<TRow> TClickHouseStore::Read(const std::string& query, TOrder order,
                                         const std::optional<TTemporaryTable>& table) {
    std::vector<TRow> rows;
    Select(
        query, &TRowFormat<TRow>::Decode, [&rows](TRow row) { rows.push_back(std::move(row)); }, table);
    std::ranges::sort(rows, {}, order);
    return rows;
}

std::vector<TDigest> TClickHouseStore::ReadDigests(const std::string& query,
                                                   const std::optional<TTemporaryTable>& table) {
    std::vector<TDigest> digests;
    Select(
        query, &DecodeDigest, [&digests](const TDigest& digest) { digests.push_back(digest); }, table);
    std::ranges::sort(digests);
    return digests;
}

// Schema.

void TClickHouseStore::RequireNoOtherTables() {
    std::string ours;
    for (const std::string& name : GetTableNames()) {
        ours.append(ours.empty() ? "" : ", ").append(QuoteText(name));
    }
    client_.Select(
        "SELECT name FROM system.tables WHERE database = " + QuoteText(client_.GetAddress().database) +
            " AND name NOT IN (" + ours + ") ORDER BY name LIMIT 1",
        [](TRowBinaryReader& reader) { return std::string(reader.Text()); },
        [this](const std::string& name) {
            throw TStoreError(GetName() + " has the table " + NVORHOST::ToShownText(name) +
                              " of another program");
        });
}

int TClickHouseStore::GetSchemaVersion() {
    std::uint32_t version = 0;
    try {
        client_.Select(
            "SELECT max(version) FROM " + std::string(schemaTable),
            [](TRowBinaryReader& reader) { return reader.Number<std::uint32_t>(); },
            [&version](std::uint32_t number) { version = number; });
    } catch (const TClickHouseError& error) {
        if (error.GetCode() != unknownTableCode && error.GetCode() != unknownDatabaseCode) {
            throw;
        }
    }
    return static_cast<int>(version);
}

void TClickHouseStore::Migrate() {
    const int version = GetSchemaVersion();
    if (version > clickHouseSchemaVersion) {
        throw TStoreError(GetName() + " has schema version " + std::to_string(version) +
                          ", which a newer version of this program wrote; this one knows " +
                          std::to_string(clickHouseSchemaVersion));
    }
    if (version == clickHouseSchemaVersion) {
        return;
    }
    client_.CreateDatabase();
    RequireNoOtherTables();
    for (const std::string& statement : MakeSchemaStatements()) {
        client_.Execute(statement);
    }
}

// Loading.

void TClickHouseStore::Insert(const std::string& target, const TRowBinaryWriter& writer) {
    if (!writer.IsEmpty()) {
        claim_.Renew();
        client_.Insert(target, writer.GetBytes(), insertSettings);
    }
}

template <typename TRow>
void TClickHouseStore::InsertRows(const std::vector<TRow>& rows, EStep step) {
    TRowBinaryWriter writer;
    for (const TRow& row : rows) {
        TRowFormat<TRow>::Encode(writer, row);
        writer.Number(GetChange(step)).Number(std::uint8_t{0});
    }
    Insert(MakeTarget<TRow>(TRowFormat<TRow>::columns), writer);
}

template <typename TRow, typename TKey>
void TClickHouseStore::InsertRemovals(const std::vector<TKey>& keys, EStep step) {
    TRowBinaryWriter writer;
    for (const TKey& key : keys) {
        TRowFormat<TRow>::EncodeKey(writer, key);
        writer.Number(GetChange(step)).Number(std::uint8_t{1});
    }
    Insert(MakeTarget<TRow>(TRowFormat<TRow>::key), writer);
}

void TClickHouseStore::InsertIdentities(const std::vector<TPresence>& presences) {
    std::set<std::pair<std::uint64_t, TMachineId>> rows;
    for (const TPresence& presence : presences) {
        for (const auto& values : presence.identity) {
            for (const std::string& value : values) {
                rows.emplace(HashOfValue(value), presence.place.machine);
            }
        }
    }
    TRowBinaryWriter writer;
    for (const auto& [value, machine] : rows) {
        writer.Number(value).Fixed(machine.GetView());
    }
    Insert("identity_rows (value, machine)", writer);
}

template <typename TRow>
void TClickHouseStore::RemoveRowsOf(const std::string& machines) {
    const std::string key(TRowFormat<TRow>::key);
    client_.Execute("INSERT INTO " + MakeTarget<TRow>(key) + " SELECT " + key + ", toUInt64(" +
                        std::to_string(GetChange(EStep::removedMachines)) + "), toUInt8(1) FROM " +
                        std::string(TRowFormat<TRow>::table) + " FINAL WHERE removed = 0 AND machine IN (" +
                        machines + ")",
                    insertSettings);
}

void TClickHouseStore::RemoveMachines(const std::vector<TMachineId>& machines) {
    std::string list;
    for (const TMachineId& machine : machines) {
        list.append(list.empty() ? "" : ", ").append(QuoteDigest(machine));
    }
    if (!list.empty()) {
        RemoveRowsOf<TPresence>(list);
        RemoveRowsOf<TInventory>(list);
        RemoveRowsOf<THead>(list);
        InsertRemovals<TMachine>(machines, EStep::removedMachines);
    }
}

// Values that are searched for come before the rows that have them.
void TClickHouseStore::InsertBatch(const TBatch& batch) {
    InsertRows(batch.versions, EStep::versions);
    InsertIdentities(batch.presences);
    InsertRows(batch.presences, EStep::presences);
    InsertRemovals<TPresence>(batch.removedPresences, EStep::removedPresences);
    InsertRemovals<TInventory>(batch.removedInventories, EStep::removedInventories);
    InsertRemovals<THead>(batch.removedHeads, EStep::removedHeads);
    RemoveMachines(batch.removedMachines);
    InsertRows(batch.aliases, EStep::aliases);
    InsertRows(batch.machines, EStep::machines);
    InsertRows(batch.heads, EStep::heads);
    InsertRows(batch.inventories, EStep::inventories);
}

void TClickHouseStore::Write(const TBatch& batch) {
    if (!claim_.IsHeld()) {
        throw TStoreError(GetName() + ": a batch is written that has not begun");
    }
    try {
        InsertBatch(batch);
        claim_.Release();
    } catch (...) {
        AbandonBatch();
        throw;
    }
}

void TClickHouseStore::AbandonBatch() noexcept {
    try {
        claim_.Release();
    } catch (const std::exception&) {
        // The claim expires.
    }
}

std::vector<TAlias> TClickHouseStore::FindAliases(std::span<const TDigest> names) {
    return Read<TAlias>(MakeQuery<TAlias>(IsAmongIds("machine")), &TAlias::from, MakeIds(names));
}

std::vector<TAlias> TClickHouseStore::ReadAliasesOf(const TMachineId& machine) {
    return Read<TAlias>(MakeQuery<TAlias>(" AND target = " + QuoteDigest(machine)), &TAlias::from);
}

std::vector<TMachine> TClickHouseStore::FindMachines(std::span<const TMachineId> ids) {
    return Read<TMachine>(MakeQuery<TMachine>(IsAmongIds("id")), &TMachine::id, MakeIds(ids));
}

std::vector<THead> TClickHouseStore::ReadHeads(std::span<const TMachineId> machines) {
    return Read<THead>(MakeQuery<THead>(IsAmongIds("machine")), &THead::place, MakeIds(machines));
}

std::vector<TInventory> TClickHouseStore::FindInventories(std::span<const TInventoryKey> keys) {
    TRowBinaryWriter writer;
    for (const TInventoryKey& key : keys) {
        TRowFormat<TInventory>::EncodeKey(writer, key);
    }
    std::vector<TInventory> found;
    Select(
        MakeQuery<TInventory>(
            "AND machine IN (SELECT machine FROM ids) AND (machine, scope, time) IN (SELECT "
            "machine, scope, time FROM ids)",
            TRowFormat<TInventory>::shortColumns),
        &TRowFormat<TInventory>::DecodeShort, [&](TInventory row) { found.push_back(std::move(row)); },
        TTemporaryTable{"ids", "machine FixedString(16), scope UInt8, time Int64", writer.GetBytes()});
    std::ranges::sort(found, {}, &KeyOf);
    return found;
}

std::vector<TScopeState> TClickHouseStore::ReadStates(std::span<const TMachineScope> places) {
    std::map<TMachineScope, TScopeState> states;
    std::vector<TMachineId> machines;
    for (const TMachineScope& place : places) {
        states[place].place = place;
        machines.push_back(place.machine);
    }
    const std::string isWanted = IsAmongIds("machine");
    for (TPresence& presence : ReadPresenceRows(MakeQuery<TPresence>(isWanted), MakeIds(machines))) {
        if (const auto state = states.find(presence.place); state != states.end()) {
            state->second.presences.push_back(std::move(presence));
        }
    }
    Select(
        MakeQuery<TInventory>(isWanted, TRowFormat<TInventory>::shortColumns),
        &TRowFormat<TInventory>::DecodeShort,
        [&states](TInventory row) {
            if (const auto state = states.find(row.place); state != states.end()) {
                state->second.inventories.push_back(std::move(row));
            }
        },
        MakeIds(machines));
    std::vector<TScopeState> ordered;
    for (const TMachineScope& place : places) {
        std::ranges::sort(states[place].inventories, {}, &TInventory::time);
        ordered.push_back(states[place]);
    }
    return ordered;
}

std::vector<TDigest> TClickHouseStore::FindKnownVersions(std::span<const TDigest> versions) {
    return ReadDigests(MakeQuery<TVersion>(IsAmongIds("digest"), "digest"), MakeIds(versions));
}

// Removed versions keep their digests, so that a cluster's servers need not be asked one by one.
std::optional<std::uint64_t> TClickHouseStore::RemoveUnusedVersions() {
    BeginBatch();
    try {
        const auto unused = ReadDigests(MakeQuery<TVersion>(
            "AND digest GLOBAL NOT IN (SELECT version FROM presence_rows FINAL WHERE removed = 0)",
            "digest"));
        InsertRemovals<TVersion>(unused, EStep::versions);
        claim_.Release();
        return unused.size();
    } catch (...) {
        AbandonBatch();
        throw;
    }
}

// Asking.

std::vector<TMachine> TClickHouseStore::ReadMachines() {
    return Read<TMachine>(MakeQuery<TMachine>(""), &TMachine::id);
}

std::vector<TInventory> TClickHouseStore::ReadInventories(const TInventoryQuery& query) {
    std::string condition =
        "AND time >= " + std::to_string(query.since) + " AND time < " + std::to_string(query.until);
    if (query.machine) {
        condition += IsMachine(*query.machine);
    }
    if (query.scope) {
        condition += " AND scope = " + std::to_string(static_cast<int>(*query.scope));
    }
    if (query.newestOnly) {
        condition += " ORDER BY machine, scope, time DESC LIMIT 1 BY machine, scope";
    }
    using TFormat = TRowFormat<TInventory>;
    std::vector<TInventory> inventories;
    client_.Select(
        MakeQuery<TInventory>(condition, query.withVolatileValues ? TFormat::columns : TFormat::shortColumns),
        query.withVolatileValues ? &TFormat::Decode : &TFormat::DecodeShort,
        [&inventories](TInventory row) { inventories.push_back(std::move(row)); });
    std::ranges::sort(inventories, {}, &KeyOf);
    return inventories;
}

std::vector<TPresence> TClickHouseStore::ReadPresences(const TMachineScope& place, TSeconds at) {
    const std::string time = std::to_string(at);
    return ReadPresenceRows(MakeQuery<TPresence>(
        IsMachine(place.machine) + " AND scope = " + std::to_string(static_cast<int>(place.scope)) +
        " AND since <= " + time + " AND until > " + time));
}

// Machines are found among all rows, those that were replaced too: that takes a fraction of the time of
// FINAL.
std::vector<TPresence> TClickHouseStore::ReadChanges(const TChangeQuery& query) {
    const auto isInSpan = [&query](const std::string& column, TSeconds unchanged) {
        return column + " > " + std::to_string(query.since) + " AND " + column +
               " <= " + std::to_string(query.until) + " AND " + column + " != " + std::to_string(unchanged);
    };
    const std::string isChange = "((" + isInSpan("since", always) + ") OR (" + isInSpan("until", open) + "))";
    if (query.machine) {
        return ReadPresenceRows(MakeQuery<TPresence>("AND " + isChange + IsMachine(*query.machine)));
    }
    const auto machines = ReadDigests("SELECT DISTINCT machine FROM presence_rows WHERE " + isChange);
    return ReadPresenceRows(MakeQuery<TPresence>("AND " + isChange + " " + IsAmongIds("machine")),
                            MakeIds(machines));
}

std::vector<TPresence> TClickHouseStore::FindIdentity(std::string_view value) {
    const auto machines = ReadDigests("SELECT DISTINCT machine FROM identity_rows WHERE value = " +
                                      std::to_string(HashOfValue(value)));
    return ReadPresenceRows(MakeQuery<TPresence>(IsAmongIds("machine") + " AND arrayExists(v -> has(v, " +
                                                 QuoteText(value) + "), identity)"),
                            MakeIds(machines));
}

std::vector<TVersionCount> TClickHouseStore::CountVersions(const TCountQuery& query) {
    std::string condition;
    for (const std::string& type : query.types) {
        condition.append(condition.empty() ? " AND type IN (" : ", ").append(QuoteText(type));
    }
    condition += query.types.empty() ? "" : ")";
    std::vector<TVersionCount> counts;
    client_.Select(
        JoinPresentState("model, type, version, uniqExact(machine), count()", condition, query.model) +
            " GROUP BY model, type, version",
        [](TRowBinaryReader& reader) {
            TVersionCount count;
            count.model = reader.Text();
            count.type = reader.Text();
            count.version = DecodeDigest(reader);
            count.machines = reader.Number<std::uint64_t>();
            count.resources = reader.Number<std::uint64_t>();
            return count;
        },
        [&counts](TVersionCount count) { counts.push_back(std::move(count)); });
    std::ranges::sort(counts, {}, [](const TVersionCount& count) {
        return std::tie(count.model, count.type, count.version);
    });
    return counts;
}

std::vector<TPresence> TClickHouseStore::FindPresences(std::span<const TDigest> versions,
                                                       const std::optional<std::string>& model) {
    return ReadPresenceRows(
        JoinPresentState(TRowFormat<TPresence>::columns, " " + IsAmongIds("version"), model),
        MakeIds(versions));
}

std::vector<TVersion> TClickHouseStore::ReadVersions(std::span<const TDigest> versions) {
    return Read<TVersion>(MakeQuery<TVersion>(IsAmongIds("digest")), &TVersion::digest, MakeIds(versions));
}

void TClickHouseStore::RunSql(std::string_view text, ISqlRows& rows) {
    PassSqlRows(client_.SelectText(text, sqlRowsFormat, {{"readonly", "1"}}), rows);
}

}  // namespace

std::unique_ptr<IFleetStore> OpenClickHouseStore(std::string_view url) {
    return OpenClickHouseStore(ParseClickHouseAddress(url), ReadClickHouseCredentials());
}

std::unique_ptr<IFleetStore> OpenClickHouseStore(const TClickHouseAddress& address,
                                                 THttpCredentials credentials, TClaimTimes times) {
    return std::make_unique<TClickHouseStore>(address, std::move(credentials), times);
}

}  // namespace NFLEET
