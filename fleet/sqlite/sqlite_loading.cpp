// What a load reads and writes.
#include "fleet/model/named_machine.h"
#include "fleet/model/stored_values.h"
#include "fleet/sqlite/search_number.h"
#include "fleet/sqlite/sqlite_engine.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace NFLEET {
namespace {

// Distinguishes identifying properties among the numbers of EShape.
constexpr std::int64_t identifyingBit = 4;

// Some ten megabytes of rows, which one batch may change all over.
constexpr std::int64_t maxRecentRows = 400000;

std::optional<TSeconds> ToColumn(TSeconds until) {
    return until == open ? std::nullopt : std::optional(until);
}

}  // namespace

std::int64_t MakeSearchNumber(std::string_view value) {
    std::uint32_t number = 0;
    std::memcpy(&number, MakeDigest(value).bytes.data(), sizeof(number));
    return number;
}

void TSqliteEngine::BeginBatch() {
    TTables& tables = GetTables();
    connection_.Execute("BEGIN IMMEDIATE");
    const std::int64_t dataVersion = connection_.GetInteger("PRAGMA data_version");
    if (dataVersion != dataVersion_) {
        tables.Forget();
        recentRows_ = -1;
        dataVersion_ = dataVersion;
    }
}

void TSqliteEngine::Write(const TBatch& batch) {
    try {
        Apply(batch);
        connection_.Execute("COMMIT");
    } catch (...) {
        AbandonBatch();
        throw;
    }
}

void TSqliteEngine::AbandonBatch() noexcept {
    if (tables_ != nullptr) {
        tables_->Forget();
    }
    recentRows_ = -1;
    if (connection_.IsInTransaction()) {
        // A failure leaves the transaction to the next one that opens the database, which undoes it.
        (void)sqlite3_exec(connection_.Get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

// Machines come first, because the other rows hold their numbers.
void TSqliteEngine::Apply(const TBatch& batch) {
    TTables& tables = GetTables();
    std::ranges::for_each(batch.machines, [&](const TMachine& machine) { WriteMachine(machine); });
    std::ranges::for_each(batch.versions, [&](const TVersion& version) { WriteVersion(version); });
    WritePresences(batch.presences);
    std::ranges::for_each(batch.removedPresences, [&](const TPresenceKey& key) { RemovePresence(key); });
    for (const TInventoryKey& key : batch.removedInventories) {
        if (const auto machine = tables.machines.Find(key.place.machine)) {
            tables.removeInventory.Run(*machine, static_cast<std::int64_t>(key.place.scope), key.time);
        }
    }
    for (const TMachineScope& place : batch.removedHeads) {
        if (const auto machine = tables.machines.Find(place.machine)) {
            tables.removeHead.Run(*machine, static_cast<std::int64_t>(place.scope));
        }
    }
    std::ranges::for_each(batch.heads, [&](const THead& head) { WriteHead(head); });
    std::ranges::for_each(batch.inventories, [&](const TInventory& inventory) { WriteInventory(inventory); });
    std::ranges::for_each(batch.removedMachines, [&](const TMachineId& machine) { RemoveMachine(machine); });
    for (const TAlias& alias : batch.aliases) {
        tables.writeAlias.Run(alias.from, alias.fromKey, alias.to);
    }
    for (const TSource& source : batch.sources) {
        tables.writeSource.Run(static_cast<std::int64_t>(source.place),
                               static_cast<std::int64_t>(source.state),
                               static_cast<std::int64_t>(source.inventories));
    }
}

std::int64_t TSqliteEngine::InsertResource(const TDigest& digest) {
    TTables& tables = GetTables();
    if (const auto id = tables.resources.Find(digest)) {
        return *id;
    }
    tables.insertResource.Run(digest);
    const std::int64_t id = sqlite3_last_insert_rowid(connection_.Get());
    tables.insertResourceKey.Run(digest, id);
    recentRows_ += recentRows_ < 0 ? 0 : 1;
    tables.resources.Remember(digest, id);
    return id;
}

// The first values of a form count as its usual ones.
std::int64_t TSqliteEngine::InsertForm(const std::vector<TVolatileValue>& values) {
    TTables& tables = GetTables();
    const TDigest digest = MakeDigest(FormatForm(values));
    if (const auto id = tables.forms.Find(digest)) {
        return *id;
    }
    tables.insertForm.Run(digest, FormatUsualForm(values));
    const std::int64_t id = sqlite3_last_insert_rowid(connection_.Get());
    tables.forms.Remember(digest, id);
    return id;
}

// The first values of a layout count as its usual ones, so that those of a machine that differ from the
// form's are stored once.
std::int64_t TSqliteEngine::InsertLayout(const std::vector<TVolatileValue>& values) {
    TTables& tables = GetTables();
    const TDigest digest = MakeDigest(FormatLayout(values));
    if (const auto id = tables.layouts.Find(digest)) {
        return *id;
    }
    const std::int64_t form = InsertForm(values);
    std::string body = tables.readForm.Begin(form).Step() ? tables.readForm.GetString(0) : std::string();
    tables.readForm.Close();
    const TStoredLayout layout = MakeStoredLayout(std::move(body), values);
    tables.insertLayout.Run(digest, form, TBytes{layout.resources}, layout.usual);
    const std::int64_t id = sqlite3_last_insert_rowid(connection_.Get());
    tables.layouts.Remember(digest, id);
    return id;
}

TStoredLayout TSqliteEngine::ReadLayout(std::int64_t id) {
    TStatement& row = GetTables().readLayout.Begin(id);
    TStoredLayout layout;
    if (row.Step()) {
        layout = {row.GetString(0), row.GetString(1), row.GetString(2)};
    }
    row.Close();
    return layout;
}

std::int64_t TSqliteEngine::RequireMachine(const TMachineId& machine) {
    const auto id = GetTables().machines.Find(machine);
    if (!id) {
        FailStore(GetName(), "a row belongs to a machine that is missing");
    }
    return *id;
}

std::int64_t TSqliteEngine::RequireVersion(const TDigest& version) {
    const auto id = GetTables().versions.Find(version);
    if (!id) {
        FailStore(GetName(), "a row has a version that is missing");
    }
    return *id;
}

void TSqliteEngine::WriteVersion(const TVersion& version) {
    TTables& tables = GetTables();
    if (tables.versions.Find(version.digest)) {
        return;
    }
    tables.insertVersion.Run(version.digest, tables.words.Get(version.type), tables.words.Get(version.list),
                             version.id);
    const std::int64_t id = sqlite3_last_insert_rowid(connection_.Get());
    for (std::size_t position = 0; position < version.properties.size(); ++position) {
        WriteProperty(id, static_cast<std::int64_t>(position), version.properties[position]);
    }
    tables.versions.Remember(version.digest, id);
}

// A scalar is element 0, the elements of an array count from 1, and a property without a value has a row
// without one.
void TSqliteEngine::WriteProperty(std::int64_t version, std::int64_t position,
                                  const TVersionProperty& stored) {
    TTables& tables = GetTables();
    const NINVENTORY::TProperty& property = stored.property;
    const std::int64_t name = tables.words.Get(property.name);
    const std::int64_t type = tables.words.Get(property.type);
    const auto shape =
        static_cast<std::int64_t>(property.shape) | (stored.isIdentifying ? identifyingBit : 0);
    if (property.values.empty()) {
        tables.insertProperty.Run(version, position, std::int64_t{0}, name, type, shape, nullptr);
    }
    std::int64_t element = property.shape == NINVENTORY::EShape::array ? 1 : 0;
    for (const std::string& value : property.values) {
        if (const auto integer = FindInteger(property.type, value)) {
            tables.insertProperty.Run(version, position, element++, name, type, shape, *integer);
        } else {
            tables.insertProperty.Run(version, position, element++, name, type, shape, value);
        }
    }
}

// Rows go into tables and indexes in the order of their keys: each page is then changed once for a batch,
// however large the table is.
void TSqliteEngine::WritePresences(const std::vector<TPresence>& presences) {
    InsertResources(presences);
    std::vector<TPartRow> parts;
    for (const TPresence& presence : presences) {
        TPartRow part = WritePresence(presence);
        for (const auto& values : presence.identity) {
            for (const std::string& value : values) {
                part.search = MakeSearchNumber(value);
                parts.push_back(part);
            }
        }
    }
    WriteParts(std::move(parts));
    MoveRecentRows(maxRecentRows);
}

void TSqliteEngine::InsertResources(const std::vector<TPresence>& presences) {
    std::vector<TDigest> digests;
    std::ranges::transform(presences, std::back_inserter(digests), &TPresence::resource);
    std::ranges::sort(digests);
    digests.erase(std::unique(digests.begin(), digests.end()), digests.end());
    std::ranges::for_each(digests, [&](const TDigest& digest) { InsertResource(digest); });
}

// Returns the row by which an identifying value is found; its search number is still to be set.
TSqliteEngine::TPartRow TSqliteEngine::WritePresence(const TPresence& presence) {
    TTables& tables = GetTables();
    const TPartRow row{.search = 0,
                       .machine = RequireMachine(presence.place.machine),
                       .scope = static_cast<std::int64_t>(presence.place.scope),
                       .type = tables.words.Get(presence.type),
                       .resource = InsertResource(presence.resource)};
    const auto identity =
        presence.identity.empty() ? std::nullopt : std::optional(FormatValues(presence.identity));
    tables.writePresence.Run(row.machine, row.scope, row.type, row.resource, presence.since,
                             ToColumn(presence.until), RequireVersion(presence.version), identity);
    return row;
}

void TSqliteEngine::WriteParts(std::vector<TPartRow> parts) {
    std::ranges::sort(parts);
    parts.erase(std::unique(parts.begin(), parts.end()), parts.end());
    for (const TPartRow& part : parts) {
        GetTables().insertPart.Run(part.search, part.machine, part.scope, part.type, part.resource);
    }
    recentRows_ += recentRows_ < 0 ? 0 : static_cast<std::int64_t>(parts.size());
}

// Moves the rows that wait into the large tables when there are many.
void TSqliteEngine::MoveRecentRows(std::int64_t limit) {
    if (recentRows_ < 0) {
        recentRows_ = connection_.GetInteger(
            "SELECT (SELECT count(*) FROM recent_part) + (SELECT count(*) FROM recent_resource_key)");
    }
    if (recentRows_ > limit) {
        connection_.Execute(
            "INSERT OR IGNORE INTO part SELECT * FROM recent_part; DELETE FROM recent_part;"
            "INSERT INTO resource_key SELECT * FROM recent_resource_key; DELETE FROM recent_resource_key");
        recentRows_ = 0;
    }
}

// Names that a machine had earlier stay, because what they find is compared.
void TSqliteEngine::WriteMachine(const TMachine& machine) {
    const TMachineFacts& facts = machine.facts;
    GetTables().writeMachine.Run(machine.id, machine.key, static_cast<std::int64_t>(machine.rule), facts.name,
                                 facts.vendor, facts.model, facts.serial, facts.uuid, machine.first,
                                 machine.last, std::int64_t{machine.usesSnapshot});
    const std::int64_t id = RequireMachine(machine.id);
    for (const std::string& name : ListNamesInLowerCase(machine)) {
        GetTables().insertMachineSearch.Run(MakeSearchNumber(name), id);
    }
}

void TSqliteEngine::WriteHead(const THead& head) {
    const TMachineFacts& facts = head.facts;
    GetTables().writeHead.Run(RequireMachine(head.place.machine), static_cast<std::int64_t>(head.place.scope),
                              head.time, head.digest, head.content, facts.name, facts.vendor, facts.model,
                              facts.serial, facts.uuid);
}

void TSqliteEngine::WriteInventory(const TInventory& inventory) {
    const std::int64_t layout = InsertLayout(inventory.volatileValues);
    GetTables().writeInventory.Run(RequireMachine(inventory.place.machine),
                                   static_cast<std::int64_t>(inventory.place.scope), inventory.time,
                                   inventory.digest, inventory.source, layout,
                                   FormatVolatile(inventory.volatileValues, ReadLayout(layout)));
}

void TSqliteEngine::RemovePresence(const TPresenceKey& key) {
    TTables& tables = GetTables();
    const auto machine = tables.machines.Find(key.place.machine);
    const auto type = tables.words.Find(key.type);
    const auto resource = tables.resources.Find(key.resource);
    if (machine && type && resource) {
        tables.removePresence.Run(*machine, static_cast<std::int64_t>(key.place.scope), *type, *resource,
                                  key.since);
    }
}

void TSqliteEngine::RemoveMachine(const TMachineId& machine) {
    TTables& tables = GetTables();
    if (const auto id = tables.machines.Find(machine)) {
        const std::string ofMachine = " WHERE machine = " + std::to_string(*id);
        for (const std::string_view table :
             {"presence", "inventory", "head", "part", "recent_part", "machine_search"}) {
            connection_.Execute("DELETE FROM " + std::string(table) + ofMachine);
        }
        connection_.Execute("DELETE FROM machine WHERE id = " + std::to_string(*id));
        tables.machines.Forget();
    }
}

std::vector<TAlias> TSqliteEngine::FindAliases(std::span<const TDigest> names) {
    TStatement& row = GetTables().findAlias;
    std::vector<TAlias> aliases;
    for (const TDigest& name : names) {
        if (row.Begin(name).Step()) {
            aliases.push_back({name, row.GetString(0), row.GetDigest(1)});
        }
    }
    row.Close();
    std::ranges::sort(aliases, {}, &TAlias::from);
    return aliases;
}

std::vector<TAlias> TSqliteEngine::ReadAliasesOf(const TMachineId& machine) {
    TStatement& row = GetTables().readAliasesOf.Begin(machine);
    std::vector<TAlias> aliases;
    while (row.Step()) {
        aliases.push_back({row.GetDigest(0), row.GetString(1), machine});
    }
    return aliases;
}

std::vector<TAlias> TSqliteEngine::ReadMergedAliases(const std::optional<TMachineId>& into) {
    (void)GetTables();
    TStatement row = connection_.Prepare(
        std::string("SELECT digest, key, target FROM alias INDEXED BY alias_merged WHERE key <> ''") +
        (into ? " AND target = ?" : "") + " ORDER BY digest");
    if (into) {
        row.Begin(*into);
    }
    std::vector<TAlias> aliases;
    while (row.Step()) {
        aliases.push_back({row.GetDigest(0), row.GetString(1), row.GetDigest(2)});
    }
    return aliases;
}

std::vector<THead> TSqliteEngine::ReadHeads(std::span<const TMachineId> machines) {
    TTables& tables = GetTables();
    std::vector<THead> heads;
    for (const TMachineId& machine : machines) {
        const auto id = tables.machines.Find(machine);
        if (!id) {
            continue;
        }
        TStatement& row = tables.readHeads.Begin(*id);
        while (row.Step()) {
            heads.push_back(
                {{machine, static_cast<EScope>(row.GetInteger(0))},
                 row.GetInteger(1),
                 row.GetDigest(2),
                 row.GetDigest(3),
                 {row.GetString(4), row.GetString(5), row.GetString(6), row.GetString(7), row.GetString(8)}});
        }
    }
    std::ranges::sort(heads, {}, &THead::place);
    return heads;
}

std::vector<TInventory> TSqliteEngine::FindInventories(std::span<const TInventoryKey> keys) {
    TTables& tables = GetTables();
    std::vector<TInventory> found;
    for (const TInventoryKey& key : keys) {
        const auto machine = tables.machines.Find(key.place.machine);
        if (machine &&
            tables.findInventory.Begin(*machine, static_cast<std::int64_t>(key.place.scope), key.time)
                .Step()) {
            found.push_back({key.place,
                             key.time,
                             tables.findInventory.GetDigest(0),
                             tables.findInventory.GetString(1),
                             {}});
            tables.findInventory.Close();
        }
    }
    return found;
}

std::vector<TScopeState> TSqliteEngine::ReadStates(std::span<const TMachineScope> places) {
    std::vector<TScopeState> states;
    std::ranges::transform(places, std::back_inserter(states),
                           [&](const TMachineScope& place) { return ReadState(place); });
    return states;
}

TScopeState TSqliteEngine::ReadState(const TMachineScope& place) {
    TTables& tables = GetTables();
    TScopeState state{place, {}, ReadRows(place, open, always)};
    if (const auto machine = tables.machines.Find(place.machine)) {
        TStatement& row = tables.readInventories.Begin(*machine, static_cast<std::int64_t>(place.scope));
        while (row.Step()) {
            state.inventories.push_back({place, row.GetInteger(0), row.GetDigest(1), row.GetString(2), {}});
        }
    }
    return state;
}

std::vector<TSource> TSqliteEngine::FindSources(std::span<const std::uint64_t> places) {
    TStatement& row = GetTables().findSource;
    std::vector<TSource> sources;
    for (const std::uint64_t place : places) {
        if (row.Begin(static_cast<std::int64_t>(place)).Step()) {
            sources.push_back({place, static_cast<std::uint64_t>(row.GetInteger(0)),
                               static_cast<std::uint64_t>(row.GetInteger(1))});
        }
    }
    row.Close();
    std::ranges::sort(sources, {}, &TSource::place);
    return sources;
}

std::vector<TDigest> TSqliteEngine::FindKnownVersions(std::span<const TDigest> versions) {
    TTables& tables = GetTables();
    std::vector<TDigest> known;
    std::ranges::copy_if(versions, std::back_inserter(known),
                         [&](const TDigest& version) { return tables.versions.Find(version).has_value(); });
    std::ranges::sort(known);
    return known;
}

std::optional<std::uint64_t> TSqliteEngine::RemoveUnusedVersions() {
    (void)GetTables();
    BeginBatch();
    try {
        MoveRecentRows(0);
        connection_.Execute(
            "CREATE TEMP TABLE used(version INTEGER PRIMARY KEY);"
            "INSERT INTO used SELECT DISTINCT version FROM presence");
        const std::int64_t unused =
            connection_.GetInteger("SELECT count(*) FROM version WHERE id NOT IN (SELECT version FROM used)");
        connection_.Execute(
            "DELETE FROM property WHERE version NOT IN (SELECT version FROM used);"
            "DELETE FROM version WHERE id NOT IN (SELECT version FROM used);"
            "DELETE FROM layout WHERE id NOT IN (SELECT layout FROM inventory);"
            "DELETE FROM form WHERE id NOT IN (SELECT form FROM layout);"
            "DELETE FROM resource WHERE id NOT IN (SELECT resource FROM presence);"
            "DELETE FROM resource_key WHERE resource NOT IN (SELECT id FROM resource);"
            "DELETE FROM part WHERE NOT EXISTS (SELECT 1 FROM presence AS p WHERE p.machine = part.machine"
            " AND p.scope = part.scope AND p.type = part.type AND p.resource = part.resource);"
            "DROP TABLE used");
        connection_.Execute("COMMIT");
        tables_->Forget();
        return static_cast<std::uint64_t>(unused);
    } catch (...) {
        AbandonBatch();
        throw;
    }
}

}  // namespace NFLEET
