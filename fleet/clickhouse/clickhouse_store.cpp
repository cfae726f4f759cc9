#include "fleet/clickhouse/clickhouse_store.h"

#include "fleet/clickhouse/client.h"
#include "fleet/clickhouse/presence_row.h"
#include "fleet/clickhouse/row_formats.h"
#include "fleet/clickhouse/schema.h"
#include "fleet/clickhouse/sql_rows.h"
#include "fleet/model/named_machine.h"
#include "fleet/model/stored_values.h"
#include "text/shown_text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace NFLEET {
namespace {

const std::string openText = std::to_string(open);

// The steps of a batch in their order. A later step counts if both write one row.
enum class EStep : TChangeNumber {
    presences,
    removedInventories,
    removedHeads,
    removedMachines,
    aliases,
    machines,
    heads,
    inventories,
    versions,
    layouts,
    compositions,
    sources,
};
constexpr TChangeNumber stepsOfAClaim = 16;

// A statement of more than 256 KiB is refused. What the start of a value finds is compared with all of it.
constexpr std::size_t maxSearched = 16384;

constexpr std::size_t compositionsAtOnce = 10'000;  // in memory

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

std::string IsPlace(const TMachineScope& place) {
    return IsMachine(place.machine) + " AND scope = " + std::to_string(static_cast<int>(place.scope));
}

// The machines of a model, or all, with the scopes that count.
std::string SelectMachines(std::string_view columns, const std::optional<std::string>& model) {
    return "SELECT " + std::string(columns) + " FROM machine_rows FINAL WHERE removed = 0" +
           (model ? " AND model = " + QuoteText(*model) : "");
}

// The rows of presences in the scopes that count for the present state of a machine.
std::string SelectPresentRows(const std::string& columns, const std::optional<std::string>& model) {
    return "SELECT " + columns + " FROM presence_rows FINAL WHERE removed = 0 AND (machine, scope = " +
           std::to_string(static_cast<int>(EScope::snapshot)) + ") GLOBAL IN (" +
           SelectMachines("id, uses_snapshot", model) + ")";
}

bool Contains(const TIdentity& identity, std::string_view value) {
    return std::ranges::any_of(identity, [value](const std::vector<std::string>& values) {
        return std::ranges::find(values, value) != values.end();
    });
}

// Passes the elements in order to an action, so many at once.
template <typename T, typename TAction>
void ForEachPart(std::span<const T> all, std::size_t size, TAction&& action) {
    for (std::size_t begin = 0; begin < all.size(); begin += size) {
        action(all.subspan(begin, std::min(size, all.size() - begin)));
    }
}

// Machines whose scopes that count have the same compositions.
struct TAlikeMachines {
    std::string model;
    std::vector<TDigest> compositions;
    std::uint64_t number = 0;
};

TAlikeMachines DecodeAlikeMachines(TRowBinaryReader& reader) {
    TAlikeMachines row{std::string(reader.Text()), std::vector<TDigest>(reader.Count()), 0};
    std::ranges::generate(row.compositions, [&reader] { return DecodeDigest(reader); });
    row.number = reader.Number<std::uint64_t>();
    return row;
}

// Adds up versions by model.
class TVersionCounts {
  public:
    explicit TVersionCounts(const std::vector<std::string>& types) : types_(types.begin(), types.end()) {}

    // The compositions that follow are those of so many machines.
    void BeginMachines(const std::string& model, std::uint64_t number) {
        versions_ = &models_[model];
        number_ = number;
        counted_.clear();
    }
    void Add(const TComposition& composition) {
        for (const TComposition::TElement& element : composition.elements) {
            if (types_.empty() || types_.contains(element.type)) {
                TVersionCount& count = (*versions_)[element.version];
                count.type = element.type;
                count.resources += number_;
                count.machines += counted_.insert(element.version).second ? number_ : 0;
            }
        }
    }
    std::vector<TVersionCount> Take() {
        std::vector<TVersionCount> counts;
        for (auto& [model, versions] : models_) {
            for (auto& [version, count] : versions) {
                counts.push_back({model, std::move(count.type), version, count.machines, count.resources});
            }
        }
        std::ranges::sort(counts, {}, [](const TVersionCount& count) {
            return std::tie(count.model, count.type, count.version);
        });
        return counts;
    }

  private:
    using TVersions = std::unordered_map<TDigest, TVersionCount, TDigestHash>;

    std::set<std::string> types_;
    std::map<std::string, TVersions> models_;
    TVersions* versions_ = nullptr;
    std::uint64_t number_ = 0;
    std::unordered_set<TDigest, TDigestHash> counted_;  // of these machines
};

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
    void BeginBatch() override;
    void Write(const TBatch& batch) override;
    void AbandonBatch() noexcept override;
    std::vector<TAlias> FindAliases(std::span<const TDigest> names) override;
    std::vector<TAlias> ReadAliasesOf(const TMachineId& machine) override;
    std::vector<TAlias> ReadMergedAliases(const std::optional<TMachineId>& into) override;
    std::vector<TMachine> FindMachines(std::span<const TMachineId> ids) override;
    std::vector<THead> ReadHeads(std::span<const TMachineId> machines) override;
    std::vector<TMachineScope> FindUnfinished(std::span<const TMachineScope> places) override;
    std::vector<TInventory> FindInventories(std::span<const TInventoryKey> keys) override;
    std::vector<TScopeState> ReadStates(std::span<const TMachineScope> places) override;
    std::vector<TSource> FindSources(std::span<const std::uint64_t> places) override;
    std::vector<TDigest> FindKnownVersions(std::span<const TDigest> versions) override;
    std::optional<std::uint64_t> RemoveUnusedVersions() override;
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
    void RequireNoOtherTables();
    void RequireNoCluster();
    void InsertBatch(const TBatch& batch);
    void ReadMarks(const std::vector<TMachineId>& machines);
    TChangeNumber GetMark(const TMachineScope& place) const;
    std::vector<THeadRow> ReadHeadRows(std::span<const TMachineId> machines);
    std::vector<TPresence>& GetPresences(const TMachineScope& place);
    void InsertPresences(const TBatch& batch);
    void InsertHeads(const TBatch& batch);
    void InsertInventories(const std::vector<TInventory>& inventories);
    void InsertSources(const std::vector<TSource>& sources);
    void RemoveUnused(const std::string& table, const std::string& used, EStep step);
    std::vector<TInventory> ReadWithValues(const std::string& condition);
    std::vector<TMachineId> FindMachinesWith(std::span<const TDigest> versions,
                                             const std::optional<std::string>& model);
    void RemoveMachines(const std::vector<TMachineId>& machines);
    void Insert(const std::string& target, const TRowBinaryWriter& writer);
    TChangeNumber GetChange(EStep step) const {
        return claim_.GetNumber() * stepsOfAClaim + static_cast<TChangeNumber>(step);
    }

    template <typename TRow>
    void InsertRows(const std::vector<TRow>& rows, EStep step);
    template <typename TRow>
    void InsertMissing(std::vector<TRow> rows, EStep step);
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
    // Returns the presences of rows that meet a condition, in the order of their keys.
    std::vector<TPresence> ReadPresenceRows(const std::string& condition,
                                            const std::optional<TTemporaryTable>& table = std::nullopt);
    std::vector<TPresence> ReadChangesOfTypes(const TChangeQuery& query);
    void ReadCompositions(std::vector<TDigest> digests);
    const TComposition& GetComposition(const TDigest& digest) const;
    [[noreturn]] void FailAtComposition() const;
    void ForEachAlike(const std::optional<std::string>& model,
                      const std::function<void(const TAlikeMachines&)>& action);
    void ForgetBatch();

    TClickHouseClient client_;
    TLoaderClaim claim_;
    TChangeNumber sourceChange_ = 0;  // of all sources that this loader writes; 0 before the first
    std::map<TDigest, TComposition> compositions_;  // some of those that are stored
    // These are copies of stored rows, valid while this loader holds its claim.
    std::map<TMachineScope, TChangeNumber> marks_;  // change of each row of presences; 0 if there is no row
    std::set<TMachineId> markedMachines_;           // machines whose marks are all in `marks_`
    std::map<TMachineScope, std::vector<TPresence>> presences_;  // as read, or as this batch changes them
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

std::vector<TPresence> TClickHouseStore::ReadPresenceRows(const std::string& condition,
                                                          const std::optional<TTemporaryTable>& table) {
    std::vector<TPresenceRow> rows;
    Select(
        MakeQuery<TPresenceRow>(condition), &TRowFormat<TPresenceRow>::Decode,
        [&rows](TPresenceRow row) { rows.push_back(std::move(row)); }, table);
    std::vector<TDigest> digests;
    std::ranges::transform(rows, std::back_inserter(digests), &TPresenceRow::composition);
    ReadCompositions(std::move(digests));
    std::vector<TPresence> presences;
    for (TPresenceRow& row : rows) {
        if (!Complete(GetComposition(row.composition), row.presences)) {
            FailAtComposition();
        }
        std::ranges::move(row.presences, std::back_inserter(presences));
    }
    SortByKey(presences);
    return presences;
}

// Makes `compositions_` contain these. What they contain follows from their digests, so they never change.
void TClickHouseStore::ReadCompositions(std::vector<TDigest> digests) {
    if (compositions_.size() > compositionsAtOnce) {
        compositions_.clear();
    }
    std::ranges::sort(digests);
    digests.erase(std::unique(digests.begin(), digests.end()), digests.end());
    std::erase_if(digests, [this](const TDigest& digest) {
        return digest == TDigest() || compositions_.contains(digest);
    });
    Select(
        MakeQuery<TComposition>(IsAmongIds("digest")), &TRowFormat<TComposition>::Decode,
        [this](TComposition row) { compositions_.insert_or_assign(row.digest, std::move(row)); },
        MakeIds(digests));
}

const TComposition& TClickHouseStore::GetComposition(const TDigest& digest) const {
    static const TComposition empty;
    const auto found = compositions_.find(digest);
    if (digest != TDigest() && found == compositions_.end()) {
        FailAtComposition();
    }
    return digest == TDigest() ? empty : found->second;
}

void TClickHouseStore::FailAtComposition() const {
    throw TStoreError(GetName() + ": the rows of composition_rows do not belong to those of presence_rows");
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

// The tables of a cluster are made on each of its servers, of which this client knows one.
void TClickHouseStore::RequireNoCluster() {
    client_.Select(
        "SELECT count() FROM system.tables WHERE engine = 'Distributed' AND database = " +
            QuoteText(client_.GetAddress().database),
        [](TRowBinaryReader& reader) { return reader.Number<std::uint64_t>(); },
        [this](std::uint64_t tables) {
            if (tables > 0) {
                throw TStoreError(GetName() +
                                  " is a cluster with tables of an older version; run what 'noxinfo fleet "
                                  "schema --cluster NAME' prints on each of its servers");
            }
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
    RequireNoCluster();
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

// Reads the changes of the rows of presences. A removed row does not count, and has no presences.
void TClickHouseStore::ReadMarks(const std::vector<TMachineId>& machines) {
    std::vector<TMachineId> unknown;
    std::ranges::copy_if(machines, std::back_inserter(unknown), [this](const TMachineId& machine) {
        return markedMachines_.insert(machine).second;
    });
    Select(
        "SELECT machine, scope, change FROM presence_rows FINAL WHERE removed = 0 " + IsAmongIds("machine"),
        [](TRowBinaryReader& reader) {
            const TDigest machine = DecodeDigest(reader);
            const auto scope = static_cast<EScope>(reader.Number<std::uint8_t>());
            return std::pair(TMachineScope{machine, scope}, reader.Number<TChangeNumber>());
        },
        [this](const auto& mark) { marks_.insert(mark); }, MakeIds(unknown));
}

// Returns what a batch changes. ReadMarks was called for the machine.
std::vector<TPresence>& TClickHouseStore::GetPresences(const TMachineScope& place) {
    const auto [entry, isNew] = presences_.try_emplace(place);
    if (isNew && marks_.contains(place)) {
        entry->second = ReadPresenceRows(IsPlace(place));
    }
    return entry->second;
}

void TClickHouseStore::InsertPresences(const TBatch& batch) {
    struct TChanges {
        std::vector<TPresence> written{};
        std::vector<TPresenceKey> removed{};
    };
    std::map<TMachineScope, TChanges> changes;
    std::vector<TMachineId> machines;
    for (const TPresence& presence : batch.presences) {
        changes[presence.place].written.push_back(presence);
    }
    for (const TPresenceKey& key : batch.removedPresences) {
        changes[key.place].removed.push_back(key);
    }
    for (const auto& [place, change] : changes) {
        machines.push_back(place.machine);
    }
    ReadMarks(machines);
    std::vector<TComposition> compositions;
    std::vector<TPresenceRow> rows;
    for (const auto& [place, change] : changes) {
        std::vector<TPresence> presences = std::move(GetPresences(place));
        ApplyChanges(change.written, change.removed, presences);
        SortForRow(presences);
        compositions.push_back(MakeComposition(presences));
        rows.push_back({place, std::move(presences), compositions.back().digest});
        marks_[place] = GetChange(EStep::presences);
    }
    InsertMissing(std::move(compositions), EStep::compositions);
    InsertRows(rows, EStep::presences);
}

// A digest that the inventory of the head has is not stored twice.
void TClickHouseStore::InsertHeads(const TBatch& batch) {
    std::vector<TMachineId> machines;
    std::ranges::transform(batch.heads, std::back_inserter(machines),
                           [](const THead& head) { return head.place.machine; });
    ReadMarks(machines);
    std::map<TInventoryKey, TDigest> digests;
    for (const TInventory& inventory : batch.inventories) {
        digests.emplace(KeyOf(inventory), inventory.digest);
    }
    std::vector<THeadRow> rows;
    for (const THead& head : batch.heads) {
        THeadRow& row = rows.emplace_back(THeadRow{head, GetMark(head.place)});
        const auto digest = digests.find({head.place, head.time});
        if (digest != digests.end() && digest->second == head.digest) {
            row.head.digest = {};
        }
    }
    InsertRows(rows, EStep::heads);
}

// Layouts come before the inventories that have them.
void TClickHouseStore::InsertInventories(const std::vector<TInventory>& inventories) {
    std::vector<TInventoryRow> rows;
    std::vector<TVolatileLayout> layouts;
    for (const TInventory& inventory : inventories) {
        TVolatileLayout layout = MakeLayout(inventory.volatileValues);
        rows.push_back({inventory, layout.digest, ListResources(inventory.volatileValues)});
        layouts.push_back(std::move(layout));
    }
    InsertMissing(std::move(layouts), EStep::layouts);
    InsertRows(rows, EStep::inventories);
}

// Sources are in no order of time, so a change of each batch would cost as many bytes as their digests. Of
// two rows with the same change, the one that was inserted later counts.
void TClickHouseStore::InsertSources(const std::vector<TSource>& sources) {
    sourceChange_ = sourceChange_ == 0 ? GetChange(EStep::sources) : sourceChange_;
    TRowBinaryWriter writer;
    for (const TSource& source : sources) {
        TRowFormat<TSource>::Encode(writer, source);
        writer.Number(sourceChange_).Number(std::uint8_t{0});
    }
    Insert(MakeTarget<TSource>(TRowFormat<TSource>::columns), writer);
}

// Inserts rows that are known by the digest of their content, unless they are stored.
template <typename TRow>
void TClickHouseStore::InsertMissing(std::vector<TRow> rows, EStep step) {
    std::vector<TDigest> digests;
    std::ranges::transform(rows, std::back_inserter(digests), &TRow::digest);
    std::ranges::sort(digests);
    digests.erase(std::unique(digests.begin(), digests.end()), digests.end());
    const auto stored = ReadDigests(MakeQuery<TRow>(IsAmongIds("digest"), "digest"), MakeIds(digests));
    std::set<TDigest> known(stored.begin(), stored.end());
    known.insert(TDigest());  // an empty row, which is not stored
    std::erase_if(rows, [&known](const TRow& row) { return !known.insert(row.digest).second; });
    InsertRows(rows, step);
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
        RemoveRowsOf<TPresenceRow>(list);
        RemoveRowsOf<TInventoryRow>(list);
        RemoveRowsOf<THeadRow>(list);
        InsertRemovals<TMachine>(machines, EStep::removedMachines);
    }
}

void TClickHouseStore::InsertBatch(const TBatch& batch) {
    InsertRows(batch.versions, EStep::versions);
    InsertPresences(batch);
    InsertRemovals<TInventoryRow>(batch.removedInventories, EStep::removedInventories);
    InsertRemovals<THeadRow>(batch.removedHeads, EStep::removedHeads);
    RemoveMachines(batch.removedMachines);
    InsertRows(batch.aliases, EStep::aliases);
    InsertRows(batch.machines, EStep::machines);
    InsertHeads(batch);
    InsertInventories(batch.inventories);
    InsertSources(batch.sources);
}

void TClickHouseStore::BeginBatch() {
    claim_.Acquire();
    ForgetBatch();
}

void TClickHouseStore::ForgetBatch() {
    marks_.clear();
    markedMachines_.clear();
    presences_.clear();
}

void TClickHouseStore::Write(const TBatch& batch) {
    if (!claim_.IsHeld()) {
        throw TStoreError(GetName() + ": a batch is written that has not begun");
    }
    try {
        InsertBatch(batch);
        ForgetBatch();
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

std::vector<TAlias> TClickHouseStore::ReadMergedAliases(const std::optional<TMachineId>& into) {
    return Read<TAlias>(
        MakeQuery<TAlias>("AND key != ''" + (into ? " AND target = " + QuoteDigest(*into) : "")),
        &TAlias::from);
}

std::vector<TMachine> TClickHouseStore::FindMachines(std::span<const TMachineId> ids) {
    return Read<TMachine>(MakeQuery<TMachine>(IsAmongIds("id")), &TMachine::id, MakeIds(ids));
}

std::vector<THead> TClickHouseStore::ReadHeads(std::span<const TMachineId> machines) {
    std::vector<THead> heads;
    for (THeadRow& row : ReadHeadRows(machines)) {
        heads.push_back(std::move(row.head));
    }
    return heads;
}

std::vector<THeadRow> TClickHouseStore::ReadHeadRows(std::span<const TMachineId> machines) {
    auto rows = Read<THeadRow>(
        MakeQuery<THeadRow>(IsAmongIds("machine")), [](const THeadRow& row) { return row.head.place; },
        MakeIds(machines));
    std::vector<TInventoryKey> keys;
    for (const THeadRow& row : rows) {
        if (row.head.digest == TDigest()) {
            keys.push_back({row.head.place, row.head.time});
        }
    }
    std::map<TInventoryKey, TDigest> digests;
    for (const TInventory& inventory : FindInventories(keys)) {
        digests.emplace(KeyOf(inventory), inventory.digest);
    }
    for (THeadRow& row : rows) {
        const auto digest = digests.find({row.head.place, row.head.time});
        row.head.digest = digest == digests.end() ? row.head.digest : digest->second;
    }
    return rows;
}

TChangeNumber TClickHouseStore::GetMark(const TMachineScope& place) const {
    const auto mark = marks_.find(place);
    return mark == marks_.end() ? 0 : mark->second;
}

// A batch writes presences, heads and inventories in this order. A place is finished if the head was written
// after its presences, and the inventory of the head is there.
std::vector<TMachineScope> TClickHouseStore::FindUnfinished(std::span<const TMachineScope> places) {
    std::vector<TMachineId> machines;
    std::ranges::transform(places, std::back_inserter(machines), &TMachineScope::machine);
    ReadMarks(machines);
    std::set<TMachineScope> started;
    std::vector<TInventoryKey> keys;
    for (const THeadRow& row : ReadHeadRows(machines)) {
        started.insert(row.head.place);
        if (row.state == GetMark(row.head.place)) {
            keys.push_back({row.head.place, row.head.time});
        }
    }
    std::set<TMachineScope> finished;
    for (const TInventory& inventory : FindInventories(keys)) {
        finished.insert(inventory.place);
    }
    std::vector<TMachineScope> unfinished;
    std::ranges::copy_if(places, std::back_inserter(unfinished), [&](const TMachineScope& place) {
        return !finished.contains(place) && (started.contains(place) || GetMark(place) != 0);
    });
    return unfinished;
}

std::vector<TInventory> TClickHouseStore::FindInventories(std::span<const TInventoryKey> keys) {
    TRowBinaryWriter writer;
    for (const TInventoryKey& key : keys) {
        TRowFormat<TInventoryRow>::EncodeKey(writer, key);
    }
    std::vector<TInventory> found;
    Select(
        MakeQuery<TInventoryRow>(
            "AND machine IN (SELECT machine FROM ids) AND (machine, scope, time) IN (SELECT "
            "machine, scope, time FROM ids)",
            TRowFormat<TInventoryRow>::shortColumns),
        &TRowFormat<TInventoryRow>::DecodeShort, [&](TInventory row) { found.push_back(std::move(row)); },
        TTemporaryTable{"ids", "machine FixedString(16), scope UInt8, time Int64", writer.GetBytes()});
    std::ranges::sort(found, {}, &KeyOf);
    return found;
}

// The presences are kept for Write, which changes them.
std::vector<TScopeState> TClickHouseStore::ReadStates(std::span<const TMachineScope> places) {
    std::map<TMachineScope, TScopeState> states;
    std::vector<TMachineId> machines;
    for (const TMachineScope& place : places) {
        states[place].place = place;
        machines.push_back(place.machine);
    }
    const std::string isWanted = IsAmongIds("machine");
    for (TPresence& presence : ReadPresenceRows(isWanted, MakeIds(machines))) {
        if (const auto state = states.find(presence.place); state != states.end()) {
            state->second.presences.push_back(std::move(presence));
        }
    }
    Select(
        MakeQuery<TInventoryRow>(isWanted, TRowFormat<TInventoryRow>::shortColumns),
        &TRowFormat<TInventoryRow>::DecodeShort,
        [&states](TInventory row) {
            if (const auto state = states.find(row.place); state != states.end()) {
                state->second.inventories.push_back(std::move(row));
            }
        },
        MakeIds(machines));
    std::vector<TScopeState> ordered;
    for (const TMachineScope& place : places) {
        TScopeState& state = states[place];
        std::ranges::sort(state.inventories, {}, &TInventory::time);
        if (claim_.IsHeld()) {
            presences_[place] = state.presences;
        }
        ordered.push_back(state);
    }
    return ordered;
}

std::vector<TSource> TClickHouseStore::FindSources(std::span<const std::uint64_t> places) {
    TRowBinaryWriter writer;
    for (const std::uint64_t place : places) {
        writer.Number(place);
    }
    return Read<TSource>(MakeQuery<TSource>(IsAmongIds("place")), &TSource::place,
                         TTemporaryTable{"ids", "id UInt64", writer.GetBytes()});
}

std::vector<TDigest> TClickHouseStore::FindKnownVersions(std::span<const TDigest> versions) {
    return ReadDigests(MakeQuery<TVersion>(IsAmongIds("digest"), "digest"), MakeIds(versions));
}

// Removed rows keep their digests, so that a cluster's servers need not be asked one by one. `used` selects
// the digests that stay.
void TClickHouseStore::RemoveUnused(const std::string& table, const std::string& used, EStep step) {
    client_.Execute("INSERT INTO " + table + " (digest, change, removed) SELECT digest, toUInt64(" +
                        std::to_string(GetChange(step)) + "), toUInt8(1) FROM " + table +
                        " FINAL WHERE removed = 0 AND digest GLOBAL NOT IN (" + used + ")",
                    insertSettings);
}

std::optional<std::uint64_t> TClickHouseStore::RemoveUnusedVersions() {
    const auto select = [](const std::string& digests, const std::string& table) {
        return "SELECT " + digests + " FROM " + table + " FINAL WHERE removed = 0";
    };
    BeginBatch();
    try {
        RemoveUnused("layout_rows", select("layout", "inventory_rows"), EStep::layouts);
        RemoveUnused("composition_rows", select("composition", "presence_rows"), EStep::compositions);
        const auto unused = ReadDigests(
            MakeQuery<TVersion>("AND digest GLOBAL NOT IN (" + select("arrayJoin(version)", "presence_rows") +
                                    " UNION ALL " + select("arrayJoin(version)", "composition_rows") + ")",
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

// Machines are found among all rows, those that were replaced too, by the columns of names only. A text may
// be longer than a statement.
std::vector<TMachine> TClickHouseStore::FindNamedMachines(std::string_view text) {
    std::string isNamed =
        "key IN (SELECT text FROM texts) OR name IN (SELECT text FROM texts) OR serial IN (SELECT text FROM "
        "texts) OR lower(uuid) IN (SELECT lower(text) FROM texts)";
    if (const auto span = FindNamedIdentifiers(text)) {
        isNamed += " OR (id >= " + QuoteDigest(span->first) + " AND id <= " + QuoteDigest(span->last) + ")";
    }
    TRowBinaryWriter writer;
    writer.Text(text);
    auto machines = FindMachines(ReadDigests("SELECT DISTINCT id FROM machine_rows WHERE " + isNamed,
                                             TTemporaryTable{"texts", "text String", writer.GetBytes()}));
    std::erase_if(machines, [text](const TMachine& machine) { return !IsNamed(machine, text); });
    return machines;
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
    if (query.withVolatileValues) {
        return ReadWithValues(condition);
    }
    std::vector<TInventory> inventories;
    client_.Select(MakeQuery<TInventoryRow>(condition, TRowFormat<TInventoryRow>::shortColumns),
                   &TRowFormat<TInventoryRow>::DecodeShort,
                   [&inventories](TInventory row) { inventories.push_back(std::move(row)); });
    std::ranges::sort(inventories, {}, &KeyOf);
    return inventories;
}

std::vector<TInventory> TClickHouseStore::ReadWithValues(const std::string& condition) {
    auto rows = Read<TInventoryRow>(MakeQuery<TInventoryRow>(condition),
                                    [](const TInventoryRow& row) { return KeyOf(row.inventory); });
    std::set<TDigest> digests;
    std::ranges::transform(rows, std::inserter(digests, digests.end()), &TInventoryRow::layout);
    std::map<TDigest, TVolatileLayout> layouts{{TDigest(), {}}};
    Select(
        MakeQuery<TVolatileLayout>(IsAmongIds("digest")), &TRowFormat<TVolatileLayout>::Decode,
        [&layouts](TVolatileLayout row) { layouts.emplace(row.digest, std::move(row)); },
        MakeIds(std::vector(digests.begin(), digests.end())));
    std::vector<TInventory> inventories;
    for (TInventoryRow& row : rows) {
        if (!Complete(layouts[row.layout], row.resources, row.inventory.volatileValues)) {
            throw TStoreError(GetName() +
                              ": the rows of layout_rows do not belong to those of inventory_rows");
        }
        inventories.push_back(std::move(row.inventory));
    }
    return inventories;
}

std::vector<TPresence> TClickHouseStore::ReadPresences(const TMachineScope& place, TSeconds at) {
    auto presences = ReadPresenceRows(IsPlace(place));
    std::erase_if(presences,
                  [at](const TPresence& presence) { return presence.since > at || presence.until <= at; });
    return presences;
}

// Most resources that changed are of other types, so the server picks the rows: `picks` is 1 for those. A
// lambda has all its arrays as arguments, because this server does not find those of a join otherwise.
std::vector<TPresence> TClickHouseStore::ReadChangesOfTypes(const TChangeQuery& query) {
    std::string types;
    for (const std::string& type : query.types) {
        types.append(types.empty() ? "" : ", ").append(QuoteText(type));
    }
    const auto isIn = [&query](const std::string& time) {
        return time + " > " + std::to_string(query.since) + " AND " + time +
               " <= " + std::to_string(query.until);
    };
    const auto pick = [](const std::string& column, const std::string& name) {
        return ", arrayFilter((x, pick) -> pick, " + column + ", picks) AS " + name;
    };
    const std::string condition = "AND changed > " + std::to_string(query.since) +
                                  (query.machine ? IsMachine(*query.machine) : std::string());
    std::vector<TPresence> presences;
    client_.Select(
        "SELECT machine, scope, kind, part, begin, end, content, value FROM (SELECT machine, scope, "
        "arrayMap((word, a, b) -> word IN (" +
            types + ") AND (a != " + std::to_string(always) + " AND " + isIn("a") + " OR b != " + openText +
            " AND " + isIn("b") + "), words, since, ends) AS picks" + pick("words", "kinds") +
            pick("resource", "parts") + pick("since", "begins") + pick("ends", "picked_ends") +
            pick("contents", "picked_contents") + pick("identity", "identities") +
            " FROM (SELECT machine, scope, resource, since, identity, arrayConcat(types, type) AS words, "
            "arrayConcat(versions, version) AS contents, arrayConcat(arrayMap(v -> toInt64(" +
            openText +
            "), versions), until) AS ends FROM (SELECT machine, scope, composition, resource, since, "
            "identity, until, type, version FROM presence_rows FINAL WHERE removed = 0 " +
            condition +
            ") ANY LEFT JOIN (SELECT digest AS composition, type AS types, version AS versions FROM "
            "composition_rows FINAL WHERE removed = 0) USING composition)) ARRAY JOIN kinds AS kind, parts "
            "AS "
            "part, begins AS begin, picked_ends AS end, picked_contents AS content, identities AS value",
        &DecodePresence, [&presences](TPresence row) { presences.push_back(std::move(row)); });
    SortByKey(presences);
    return presences;
}

// Machines are found among all rows, those that were replaced too: that takes a fraction of the time of
// FINAL.
std::vector<TPresence> TClickHouseStore::ReadChanges(const TChangeQuery& query) {
    if (!query.types.empty()) {
        return ReadChangesOfTypes(query);
    }
    const std::string hasChanged = "changed > " + std::to_string(query.since);
    auto presences =
        query.machine
            ? ReadPresenceRows("AND " + hasChanged + IsMachine(*query.machine))
            : ReadPresenceRows(
                  "AND " + hasChanged + " " + IsAmongIds("machine"),
                  MakeIds(ReadDigests("SELECT DISTINCT machine FROM presence_rows WHERE " + hasChanged)));
    const auto isIn = [&query](TSeconds time) { return time > query.since && time <= query.until; };
    std::erase_if(presences, [&isIn](const TPresence& presence) {
        const bool begins = presence.since != always && isIn(presence.since);
        return !begins && (presence.until == open || !isIn(presence.until));
    });
    return presences;
}

std::vector<TPresence> TClickHouseStore::FindIdentity(std::string_view value) {
    const std::string searched = FormatSearchedValue(value).substr(0, maxSearched);
    std::string isThere = "arrayExists(text -> position(text, " + QuoteText(searched) + ") > 0, identity)";
    if (const auto resource = ParseDigest(value)) {
        isThere += " OR has(resource, " + QuoteDigest(*resource) + ")";
    }
    const auto machines = ReadDigests("SELECT DISTINCT machine FROM presence_rows WHERE " + isThere);
    auto presences = ReadPresenceRows(IsAmongIds("machine"), MakeIds(machines));
    std::erase_if(presences,
                  [value](const TPresence& presence) { return !Contains(presence.identity, value); });
    return presences;
}

std::vector<TVersionCount> TClickHouseStore::CountVersions(const TCountQuery& query) {
    TVersionCounts counts(query.types);
    ForEachAlike(query.model, [&](const TAlikeMachines& machines) {
        counts.BeginMachines(machines.model, machines.number);
        for (const TDigest& composition : machines.compositions) {
            counts.Add(GetComposition(composition));
        }
    });
    return counts.Take();
}

// Machines that are made of the same parts are counted by the server.
void TClickHouseStore::ForEachAlike(const std::optional<std::string>& model,
                                    const std::function<void(const TAlikeMachines&)>& action) {
    std::vector<TAlikeMachines> all;
    client_.Select("SELECT model, lists, count() FROM (SELECT machine, model, lists FROM (" +
                       SelectPresentRows("machine, arraySort(groupArray(composition)) AS lists", model) +
                       " GROUP BY machine) ALL INNER JOIN (" + SelectMachines("id AS machine, model", model) +
                       ") USING machine) GROUP BY model, lists",
                   &DecodeAlikeMachines, [&all](TAlikeMachines row) { all.push_back(std::move(row)); });
    ForEachPart(std::span<const TAlikeMachines>(all), compositionsAtOnce, [&](const auto& some) {
        std::vector<TDigest> digests;
        for (const TAlikeMachines& machines : some) {
            digests.insert(digests.end(), machines.compositions.begin(), machines.compositions.end());
        }
        ReadCompositions(std::move(digests));
        std::ranges::for_each(some, action);
    });
}

std::vector<TPartCount> TClickHouseStore::CountParts(const TCountQuery& query) {
    struct TMachinePart {
        TMachineId machine;
        TDigest composition;
    };
    std::vector<TMachinePart> all;
    client_.Select(
        SelectPresentRows("machine, composition", query.model),
        [](TRowBinaryReader& reader) {
            const TDigest machine = DecodeDigest(reader);
            return TMachinePart{machine, DecodeDigest(reader)};
        },
        [&all](const TMachinePart& row) { all.push_back(row); });
    std::map<std::pair<TMachineId, std::string>, std::uint64_t> counts;
    ForEachPart(std::span<const TMachinePart>(all), compositionsAtOnce, [&](const auto& some) {
        std::vector<TDigest> digests;
        std::ranges::transform(some, std::back_inserter(digests), &TMachinePart::composition);
        ReadCompositions(std::move(digests));
        for (const TMachinePart& row : some) {
            for (const TComposition::TElement& element : GetComposition(row.composition).elements) {
                if (std::ranges::find(query.types, element.type) != query.types.end()) {
                    ++counts[{row.machine, element.type}];
                }
            }
        }
    });
    std::vector<TPartCount> ordered;
    for (const auto& [key, number] : counts) {
        ordered.push_back({key.first, key.second, number});
    }
    return ordered;
}

std::vector<TMachineId> TClickHouseStore::FindMachinesWith(std::span<const TDigest> versions) {
    return FindMachinesWith(versions, std::nullopt);
}

// Finds machines by the compositions of their rows, which are small.
std::vector<TMachineId> TClickHouseStore::FindMachinesWith(std::span<const TDigest> versions,
                                                           const std::optional<std::string>& model) {
    return ReadDigests(SelectPresentRows("DISTINCT machine", model) +
                           " AND composition GLOBAL IN (SELECT digest FROM composition_rows FINAL "
                           "ARRAY JOIN version AS content "
                           "WHERE removed = 0 AND content IN (SELECT id FROM ids))",
                       MakeIds(versions));
}

// The digests of machines and versions are passed as one table.
std::vector<TPresence> TClickHouseStore::FindPresences(std::span<const TDigest> versions,
                                                       const std::optional<std::string>& model) {
    auto digests = FindMachinesWith(versions, model);
    if (digests.empty()) {
        return {};
    }
    digests.insert(digests.end(), versions.begin(), versions.end());
    std::vector<TPresence> presences;
    Select(
        "SELECT machine, scope, kind, part, begin, content, value FROM (SELECT machine, scope, resource, "
        "since, "
        "identity, kinds, contents FROM (" +
            SelectPresentRows("machine, scope, composition, resource, since, identity", model) + " " +
            IsAmongIds("machine") +
            ") ALL INNER JOIN (SELECT digest AS composition, type AS kinds, version AS contents FROM "
            "composition_rows FINAL WHERE removed = 0) USING composition) ARRAY JOIN kinds AS kind, contents "
            "AS "
            "content, arraySlice(resource, 1, length(contents)) AS part, arraySlice(since, 1, "
            "length(contents)) "
            "AS begin, arraySlice(identity, 1, length(contents)) AS value WHERE content IN (SELECT id FROM "
            "ids)",
        &DecodeOpenPresence, [&presences](TPresence row) { presences.push_back(std::move(row)); },
        MakeIds(digests));
    SortByKey(presences);
    return presences;
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
