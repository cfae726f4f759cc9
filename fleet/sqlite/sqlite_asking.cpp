// What questions read.
#include "fleet/model/named_machine.h"
#include "fleet/model/stored_values.h"
#include "fleet/sqlite/search_number.h"
#include "fleet/sqlite/sqlite_engine.h"
#include "text/ascii.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace NFLEET {
namespace {

constexpr std::int64_t identifyingBit = 4;
constexpr std::int64_t shapeBits = 3;

constexpr char presenceColumns[] =
    "SELECT p.type, r.digest, p.since, p.until, v.digest, p.identity, m.digest, p.scope FROM presence AS p"
    " CROSS JOIN machine AS m ON m.id = p.machine CROSS JOIN resource AS r ON r.id = p.resource"
    " CROSS JOIN version AS v ON v.id = p.version";

bool Contains(const TIdentity& identity, std::string_view value) {
    return std::ranges::any_of(
        identity, [&](const auto& values) { return std::ranges::find(values, value) != values.end(); });
}

// Adds up what different scopes of a machine have.
void JoinCounts(std::vector<TPartCount>& counts) {
    std::ranges::sort(counts, [](const TPartCount& left, const TPartCount& right) {
        return std::tie(left.machine, left.type) < std::tie(right.machine, right.type);
    });
    std::vector<TPartCount> joined;
    for (TPartCount& count : counts) {
        if (!joined.empty() && joined.back().machine == count.machine && joined.back().type == count.type) {
            joined.back().resources += count.resources;
        } else {
            joined.push_back(std::move(count));
        }
    }
    counts = std::move(joined);
}

TMachine GetMachine(const TStatement& row) {
    return {row.GetDigest(0),
            row.GetString(1),
            static_cast<EMachineRule>(row.GetInteger(2)),
            {row.GetString(3), row.GetString(4), row.GetString(5), row.GetString(6), row.GetString(7)},
            row.GetInteger(8),
            row.GetInteger(9),
            row.GetInteger(10) != 0};
}

}  // namespace

std::vector<TMachine> TSqliteEngine::FindMachines(std::span<const TMachineId> ids) {
    TTables& tables = GetTables();
    std::vector<TMachine> machines;
    for (const TMachineId& digest : ids) {
        const auto id = tables.machines.Find(digest);
        if (id && tables.readMachine.Begin(*id).Step()) {
            machines.push_back(GetMachine(tables.readMachine));
            tables.readMachine.Close();
        }
    }
    std::ranges::sort(machines, {}, &TMachine::id);
    return machines;
}

std::vector<TMachine> TSqliteEngine::ReadMachines() {
    (void)GetTables();
    std::vector<TMachine> machines;
    TStatement row = connection_.Prepare(
        "SELECT digest, key, rule, name, vendor, model, serial, uuid, first, last, uses_snapshot FROM "
        "machine");
    while (row.Step()) {
        machines.push_back(GetMachine(row));
    }
    std::ranges::sort(machines, {}, &TMachine::id);
    return machines;
}

std::vector<TMachine> TSqliteEngine::FindNamedMachines(std::string_view text) {
    std::optional<TDigest> first;
    std::optional<TDigest> last;
    if (const auto span = FindNamedIdentifiers(text)) {
        first = span->first;
        last = span->last;
    }
    TStatement& row =
        GetTables().findNamedMachines.Begin(MakeSearchNumber(NVORHOST::ToLowerCase(text)), first, last);
    std::vector<TMachine> machines;
    while (row.Step()) {
        machines.push_back(GetMachine(row));
    }
    std::erase_if(machines, [text](const TMachine& machine) { return !IsNamed(machine, text); });
    std::ranges::sort(machines, {}, &TMachine::id);
    return machines;
}

std::vector<TInventory> TSqliteEngine::ReadInventories(const TInventoryQuery& query) {
    TTables& tables = GetTables();
    std::string condition = " WHERE i.time >= ?1 AND i.time < ?2";
    if (query.machine) {
        const auto id = tables.machines.Find(*query.machine);
        condition += " AND i.machine = " + std::to_string(id.value_or(-1));
    }
    if (query.scope) {
        condition += " AND i.scope = " + std::to_string(static_cast<int>(*query.scope));
    }
    if (query.newestOnly) {
        condition +=
            " AND i.time = (SELECT max(n.time) FROM inventory AS n WHERE n.machine = i.machine"
            " AND n.scope = i.scope AND n.time >= ?1 AND n.time < ?2)";
    }
    TStatement row = connection_.Prepare(
        "SELECT m.digest, i.scope, i.time, i.digest, i.source, i.layout, i.volatile FROM inventory AS i"
        " CROSS JOIN machine AS m ON m.id = i.machine" +
        condition);
    row.Begin(query.since, query.until);
    std::vector<TInventory> inventories;
    while (row.Step()) {
        TInventory inventory{{row.GetDigest(0), static_cast<EScope>(row.GetInteger(1))},
                             row.GetInteger(2),
                             row.GetDigest(3),
                             row.GetString(4),
                             {}};
        if (query.withVolatileValues) {
            auto values = ParseVolatile(ReadLayout(row.GetInteger(5)), row.GetText(6));
            if (!values) {
                FailStore(GetName(), "volatile values are malformed");
            }
            inventory.volatileValues = std::move(*values);
        }
        inventories.push_back(std::move(inventory));
    }
    std::ranges::sort(inventories, [](const TInventory& left, const TInventory& right) {
        return std::tie(left.place, left.time) < std::tie(right.place, right.time);
    });
    return inventories;
}

std::vector<TPresence> TSqliteEngine::ReadPresences(const TMachineScope& place, TSeconds at) {
    return ReadRows(place, at, at);
}

// Returns the rows that begin at or before `from` and end after `to`.
std::vector<TPresence> TSqliteEngine::ReadRows(const TMachineScope& place, TSeconds from, TSeconds to) {
    TTables& tables = GetTables();
    std::vector<TPresence> rows;
    const auto machine = tables.machines.Find(place.machine);
    if (!machine) {
        return rows;
    }
    TStatement& row = tables.readPresences.Begin(*machine, static_cast<std::int64_t>(place.scope), from, to);
    while (row.Step()) {
        rows.push_back({place, tables.words.GetText(row.GetInteger(0)), row.GetDigest(1), row.GetInteger(2),
                        row.IsNull(3) ? open : row.GetInteger(3), row.GetDigest(4),
                        ParseIdentity(row.GetText(5))});
    }
    SortByKey(rows);
    return rows;
}

std::vector<TPresence> TSqliteEngine::ReadSelected(TStatement& row) {
    TTables& tables = GetTables();
    std::vector<TPresence> rows;
    while (row.Step()) {
        rows.push_back({{row.GetDigest(6), static_cast<EScope>(row.GetInteger(7))},
                        tables.words.GetText(row.GetInteger(0)),
                        row.GetDigest(1),
                        row.GetInteger(2),
                        row.IsNull(3) ? open : row.GetInteger(3),
                        row.GetDigest(4),
                        ParseIdentity(row.GetText(5))});
    }
    return rows;
}

TIdentity TSqliteEngine::ParseIdentity(std::string_view text) const {
    if (text.empty()) {
        return {};
    }
    auto identity = ParseValues(text);
    if (!identity) {
        FailStore(GetName(), "identifying values are malformed");
    }
    return std::move(*identity);
}

// Returns the words' numbers; -1 for a word that no row has.
std::vector<std::int64_t> TSqliteEngine::FindTypes(const std::vector<std::string>& types) {
    std::vector<std::int64_t> numbers;
    for (const std::string& type : types) {
        numbers.push_back(GetTables().words.Find(type).value_or(-1));
    }
    return numbers;
}

std::vector<TPresence> TSqliteEngine::ReadChanges(const TChangeQuery& query) {
    TTables& tables = GetTables();
    std::string condition;
    std::string sinceIndex = " INDEXED BY presence_since";
    std::string untilIndex = " INDEXED BY presence_until";
    if (query.machine) {
        condition = " AND p.machine = " + std::to_string(tables.machines.Find(*query.machine).value_or(-1));
        sinceIndex.clear();
        untilIndex.clear();
    }
    if (!query.types.empty()) {
        condition += " AND p.type IN (";
        for (const std::int64_t type : FindTypes(query.types)) {
            condition += (condition.ends_with('(') ? "" : ", ") + std::to_string(type);
        }
        condition += ")";
    }
    std::string sql = presenceColumns;
    const auto withIndex = [&](const std::string& index) {
        std::string text = sql;
        return text.replace(text.find(" AS p"), 5, " AS p" + index);
    };
    TStatement begins = connection_.Prepare(
        withIndex(sinceIndex) + " WHERE p.since > 0 AND p.since > ?1 AND p.since <= ?2" + condition);
    begins.Begin(query.since, query.until);
    std::vector<TPresence> rows = ReadSelected(begins);
    // Rows that also begin in the span were read already.
    TStatement ends = connection_.Prepare(withIndex(untilIndex) +
                                          " WHERE p.until IS NOT NULL AND p.until > ?1 AND p.until <= ?2 AND "
                                          "NOT (p.since > ?1 AND p.since > 0)" +
                                          condition);
    ends.Begin(query.since, query.until);
    std::ranges::move(ReadSelected(ends), std::back_inserter(rows));
    SortByKey(rows);
    return rows;
}

std::vector<TPresence> TSqliteEngine::FindIdentity(std::string_view value) {
    (void)GetTables();
    TStatement row = connection_.Prepare(
        "SELECT p.type, r.digest, p.since, p.until, v.digest, p.identity, m.digest, p.scope FROM"
        " (SELECT machine, scope, type, resource FROM part WHERE search = ?1"
        " UNION SELECT machine, scope, type, resource FROM recent_part WHERE search = ?1) AS s"
        " CROSS JOIN presence AS p ON p.machine = s.machine AND p.scope = s.scope AND p.type = s.type"
        " AND p.resource = s.resource"
        " CROSS JOIN machine AS m ON m.id = p.machine CROSS JOIN resource AS r ON r.id = p.resource"
        " CROSS JOIN version AS v ON v.id = p.version");
    row.Begin(MakeSearchNumber(value));
    std::vector<TPresence> rows = ReadSelected(row);
    std::erase_if(rows, [&](const TPresence& presence) { return !Contains(presence.identity, value); });
    SortByKey(rows);
    return rows;
}

std::vector<TSqliteEngine::TCurrentMachine> TSqliteEngine::ListCurrent(
    const std::optional<std::string>& model) {
    (void)GetTables();
    TStatement row = connection_.Prepare(std::string("SELECT id, digest, model, uses_snapshot FROM machine") +
                                         (model ? " WHERE model = ?" : " ORDER BY id"));
    if (model) {
        row.Begin(*model);
    }
    std::vector<TCurrentMachine> machines;
    while (row.Step()) {
        machines.push_back({row.GetInteger(0), row.GetDigest(1), row.GetString(2), row.GetInteger(3) != 0});
    }
    return machines;
}

// Visits the rows of the present state, of some types or of all, by machine, scope and type. Each column that
// is not needed saves time.
void TSqliteEngine::ForEachCurrent(
    const std::optional<std::string>& model, const std::vector<std::int64_t>& types, std::string_view columns,
    const std::function<void(const TCurrentMachine&, TStatement& row)>& action) {
    const std::string rows =
        "SELECT " + std::string(columns) + " FROM presence WHERE machine = ? AND scope = ?";
    TStatement all = connection_.Prepare(rows + " AND until IS NULL");
    TStatement ofType = connection_.Prepare(rows + " AND type = ? AND until IS NULL");
    for (const TCurrentMachine& machine : ListCurrent(model)) {
        for (const EScope scope : scopes) {
            if (!IsCurrentScope(machine.usesSnapshot, scope)) {
                continue;
            }
            const auto number = static_cast<std::int64_t>(scope);
            for (const std::int64_t type : types) {
                for (ofType.Begin(machine.id, number, type); ofType.Step();) {
                    action(machine, ofType);
                }
            }
            if (types.empty()) {
                for (all.Begin(machine.id, number); all.Step();) {
                    action(machine, all);
                }
            }
        }
    }
}

std::vector<TVersionCount> TSqliteEngine::CountVersions(const TCountQuery& query) {
    TTables& tables = GetTables();
    const std::vector<std::int64_t> types = FindTypes(query.types);
    struct TCount {
        std::int64_t type = 0;
        std::int64_t lastMachine = -1;
        std::uint64_t machines = 0;
        std::uint64_t resources = 0;
    };
    std::map<std::string, std::unordered_map<std::int64_t, TCount>> models;
    const TCurrentMachine* last = nullptr;
    std::unordered_map<std::int64_t, TCount>* ofModel = nullptr;
    ForEachCurrent(query.model, types, "type, version", [&](const TCurrentMachine& machine, TStatement& row) {
        if (&machine != last) {
            last = &machine;
            ofModel = &models[machine.model];
        }
        TCount& count = (*ofModel)[row.GetInteger(1)];
        count.type = row.GetInteger(0);
        ++count.resources;
        count.machines += count.lastMachine == machine.id ? 0 : 1;
        count.lastMachine = machine.id;
    });
    TStatement digest = connection_.Prepare("SELECT digest FROM version WHERE id = ?");
    std::vector<TVersionCount> counts;
    for (const auto& [model, versions] : models) {
        for (const auto& [version, count] : versions) {
            digest.Begin(version).Step();
            counts.push_back({model, tables.words.GetText(count.type), digest.GetDigest(0), count.machines,
                              count.resources});
        }
    }
    std::ranges::sort(counts, [](const TVersionCount& left, const TVersionCount& right) {
        return std::tie(left.model, left.type, left.version) <
               std::tie(right.model, right.type, right.version);
    });
    return counts;
}

std::vector<TPartCount> TSqliteEngine::CountParts(const TCountQuery& query) {
    TTables& tables = GetTables();
    const std::vector<std::int64_t> types = FindTypes(query.types);
    std::vector<TPartCount> counts;
    std::int64_t lastType = -1;
    ForEachCurrent(query.model, types, "type", [&](const TCurrentMachine& machine, TStatement& row) {
        const std::int64_t type = row.GetInteger(0);
        if (counts.empty() || counts.back().machine != machine.digest || lastType != type) {
            counts.push_back({machine.digest, tables.words.GetText(type), 0});
            lastType = type;
        }
        ++counts.back().resources;
    });
    JoinCounts(counts);
    return counts;
}

TSqliteEngine::TWantedVersions TSqliteEngine::FindWanted(std::span<const TDigest> versions) {
    TTables& tables = GetTables();
    TWantedVersions wanted;
    for (const TDigest& version : versions) {
        if (const auto id = tables.versions.Find(version)) {
            wanted.versions.emplace(*id, version);
            tables.readVersion.Begin(*id).Step();
            wanted.types.push_back(tables.readVersion.GetInteger(0));
            tables.readVersion.Close();
        }
    }
    std::ranges::sort(wanted.types);
    wanted.types.erase(std::unique(wanted.types.begin(), wanted.types.end()), wanted.types.end());
    return wanted;
}

std::vector<TMachineId> TSqliteEngine::FindMachinesWith(std::span<const TDigest> versions) {
    const TWantedVersions wanted = FindWanted(versions);
    std::vector<TMachineId> machines;
    if (wanted.types.empty()) {
        return machines;
    }
    ForEachCurrent(std::nullopt, wanted.types, "version",
                   [&](const TCurrentMachine& machine, TStatement& row) {
                       const bool isNew = machines.empty() || machines.back() != machine.digest;
                       if (isNew && wanted.versions.contains(row.GetInteger(0))) {
                           machines.push_back(machine.digest);
                       }
                   });
    std::ranges::sort(machines);
    return machines;
}

std::vector<TPresence> TSqliteEngine::FindPresences(std::span<const TDigest> versions,
                                                    const std::optional<std::string>& model) {
    TTables& tables = GetTables();
    const TWantedVersions wanted = FindWanted(versions);
    std::vector<TPresence> rows;
    if (wanted.types.empty()) {
        return rows;
    }
    TStatement resource = connection_.Prepare("SELECT digest FROM resource WHERE id = ?");
    constexpr std::string_view columns = "type, resource, since, version, identity, scope";
    ForEachCurrent(model, wanted.types, columns, [&](const TCurrentMachine& machine, TStatement& row) {
        const auto version = wanted.versions.find(row.GetInteger(3));
        if (version != wanted.versions.end()) {
            resource.Begin(row.GetInteger(1)).Step();
            rows.push_back({{machine.digest, static_cast<EScope>(row.GetInteger(5))},
                            tables.words.GetText(row.GetInteger(0)),
                            resource.GetDigest(0),
                            row.GetInteger(2),
                            open,
                            version->second,
                            ParseIdentity(row.GetText(4))});
        }
    });
    SortByKey(rows);
    return rows;
}

std::vector<TVersion> TSqliteEngine::ReadVersions(std::span<const TDigest> versions) {
    TTables& tables = GetTables();
    std::vector<TVersion> read;
    for (const TDigest& digest : versions) {
        if (const auto id = tables.versions.Find(digest)) {
            read.push_back(ReadVersion(*id, digest));
        }
    }
    std::ranges::sort(read, {}, &TVersion::digest);
    return read;
}

TVersion TSqliteEngine::ReadVersion(std::int64_t id, const TDigest& digest) {
    TTables& tables = GetTables();
    TVersion version;
    version.digest = digest;
    if (tables.readVersion.Begin(id).Step()) {
        version.type = tables.words.GetText(tables.readVersion.GetInteger(0));
        version.list = tables.words.GetText(tables.readVersion.GetInteger(1));
        version.id =
            tables.readVersion.IsNull(2) ? std::nullopt : std::optional(tables.readVersion.GetString(2));
        tables.readVersion.Close();
    }
    std::int64_t last = -1;
    TStatement& row = tables.readProperties.Begin(id);
    while (row.Step()) {
        if (row.GetInteger(0) != last) {
            last = row.GetInteger(0);
            const std::int64_t shape = row.GetInteger(4);
            version.properties.push_back({{tables.words.GetText(row.GetInteger(2)),
                                           tables.words.GetText(row.GetInteger(3)),
                                           static_cast<NINVENTORY::EShape>(shape & shapeBits),
                                           {}},
                                          (shape & identifyingBit) != 0});
        }
        if (!row.IsNull(5)) {
            version.properties.back().property.values.push_back(row.GetString(5));
        }
    }
    return version;
}

}  // namespace NFLEET
