#include "fleet/clickhouse/schema.h"

#include "fleet/clickhouse/client.h"
#include "text/ascii.h"

#include <algorithm>
#include <utility>

namespace NFLEET {
namespace {

struct TTable {
    std::string_view name;
    std::string_view columns;  ///< apart from `change` and `removed`
    std::string_view key;      ///< columns that identify a row, in the order of the table
    std::string_view shard;    ///< number that chooses the server of a cluster
    int granularity;           ///< number of rows that are read for one of them
};

struct TView {
    std::string_view name;
    std::string_view query;  ///< with "@" before the name of each table
};

constexpr std::string_view byMachine = "cityHash64(machine)";

// clang-format off
constexpr TTable tables[] = {
    {"machine",
     "id FixedString(16), key String, rule UInt8, name String, vendor String, model String, serial String, uuid String, "
     "first Int64, last Int64, uses_snapshot UInt8",
     "id", "cityHash64(id)", 8192},
    {"alias",
     "machine FixedString(16), key String, target FixedString(16)",
     "machine", byMachine, 8192},
    {"head",
     "machine FixedString(16), scope UInt8, time Int64, digest FixedString(16), content FixedString(16), "
     "name String, vendor String, model String, serial String, uuid String, state UInt64",
     "machine, scope", byMachine, 8192},
    {"inventory",
     "machine FixedString(16), scope UInt8, time Int64, digest FixedString(16), source String, layout FixedString(16), "
     "resource Array(FixedString(16)), volatile_values Array(Array(String))",
     "machine, scope, time", byMachine, 1024},
    // Everything about volatile values that is the same in most inventories.
    {"layout",
     "digest FixedString(16), number Array(UInt32), position Array(UInt32), name Array(String), type Array(String), "
     "shape Array(UInt8)",
     "digest", "cityHash64(digest)", 256},
    {"version",
     "digest FixedString(16), type String, list String, id Nullable(String), property_name Array(String), "
     "property_type Array(String), property_shape Array(UInt8), property_values Array(Array(String)), "
     "identifying Array(UInt8)",
     "digest", "cityHash64(digest)", 8192},
    // All presences of a machine and scope: those of the present, then the others. The columns `until`, `type` and
    // `version` have elements for the latter only; the composition has the types and versions of the former.
    {"presence",
     "machine FixedString(16), scope UInt8, composition FixedString(16), changed Int64, "
     "resource Array(FixedString(16)), since Array(Int64), identity Array(String), until Array(Int64), "
     "type Array(String), version Array(FixedString(16))",
     "machine, scope", byMachine, 256},
    // The parts of a machine, once for all machines that are made of the same ones.
    {"composition",
     "digest FixedString(16), type Array(String), version Array(FixedString(16))",
     "digest", "cityHash64(digest)", 256},
    // Files of which everything is stored.
    {"source", "place UInt64, state UInt64, inventories UInt32", "place", "cityHash64(place)", 256},
    // The claims of loaders; one server of a cluster has them all.
    {"loader",
     "loader FixedString(16), number UInt64, time UInt32",
     "loader", "0", 8192},
};

// Names, words and times instead of digests and numbers, for people. Rows that were replaced or removed are left out.
constexpr TView views[] = {
    {"machine",
     "SELECT hex(number) AS id, key, rule, name, vendor, model, serial, uuid, first, last, uses_snapshot "
     "FROM (SELECT id AS number, key, rule, name, vendor, model, serial, uuid, first, last, uses_snapshot "
     "FROM @machine_rows FINAL WHERE removed = 0)"},
    {"inventories",
     "SELECT hex(id) AS machine, machine_name, SCOPE AS scope, TIME(at) AS time, hex(content) AS digest, source "
     "FROM (SELECT machine AS id, scope AS kind, time AS at, digest AS content, source FROM @inventory_rows FINAL "
     "WHERE removed = 0) "
     "ALL INNER JOIN (SELECT id, name AS machine_name FROM @machine_rows FINAL WHERE removed = 0) USING id"},
    {"resources",
     "SELECT hex(id) AS machine, machine_name, model, type, hex(part) AS resource, SCOPE AS scope, "
     "if(begin > 0, TIME(begin), NULL) AS since, if(end < 9223372036854775807, TIME(end), NULL) AS until, "
     "hex(content) AS version, identity "
     "FROM (SELECT id, kind, word AS type, part, begin, end, content, IDENTITY AS identity FROM (PRESENCES)) "
     "ALL INNER JOIN (SELECT id, name AS machine_name, model FROM @machine_rows FINAL WHERE removed = 0) USING id"},
    {"properties",
     "SELECT version, name, type, element, value "
     "FROM (SELECT hex(digest) AS version, name, kind AS type, elements FROM @version_rows FINAL "
     "ARRAY JOIN property_name AS name, property_type AS kind, property_values AS elements WHERE removed = 0) "
     "ARRAY JOIN elements AS value, arrayEnumerate(elements) AS element"},
    {"changes",
     "SELECT TIME(at) AS time, if(is_begin, 'begins', 'ends') AS change, hex(id) AS machine, SCOPE AS scope, type, "
     "hex(part) AS resource, hex(content) AS version, identity "
     "FROM (SELECT id, kind, word AS type, part, if(is_begin, begin, end) AS at, content, IDENTITY AS identity, "
     "arrayJoin([1, 0]) AS is_begin FROM (PRESENCES)) "
     "WHERE at > 0 AND at < 9223372036854775807"},
};
// clang-format on

std::string ReplaceAll(std::string text, std::string_view old, std::string_view replacement) {
    for (auto place = text.find(old); place != std::string::npos; place = text.find(old, place)) {
        text.replace(place, old.size(), replacement);
        place += replacement.size();
    }
    return text;
}

// Replaces TIME(column) by a text in UTC; a time that ClickHouse cannot represent stays a number of seconds.
std::string ReplaceTimes(std::string query) {
    for (const std::string column : {"at", "begin", "end"}) {
        query = ReplaceAll(query, "TIME(" + column + ")",
                           "if(" + column + " >= 0 AND " + column +
                               " < 4294967296, toString(toDateTime(toUInt32(" + column +
                               "), 'UTC')), toString(" + column + "))");
    }
    return query;
}

// Words of a view's query in capitals, and the expressions that replace them.
constexpr std::pair<std::string_view, std::string_view> expressions[] = {
    {"SCOPE", "if(kind = 1, 'hardware', if(kind = 2, 'system-information', 'snapshot'))"},
    // Presences one by one; those of the present have no time of their end.
    {"PRESENCES",
     "SELECT id, kind, word, part, begin, end, content, text FROM (SELECT id, kind, parts, begins, texts, "
     "arrayConcat(types, old_types) AS words, arrayConcat(versions, old_versions) AS contents, "
     "arrayConcat(arrayMap(v -> toInt64(9223372036854775807), versions), old_ends) AS ends FROM "
     "(SELECT machine AS id, scope AS kind, composition AS list, resource AS parts, since AS begins, "
     "identity AS texts, until AS old_ends, type AS old_types, version AS old_versions FROM @presence_rows "
     "FINAL WHERE removed = 0) ANY LEFT JOIN (SELECT digest AS list, type AS types, version AS versions FROM "
     "@composition_rows FINAL WHERE removed = 0) USING list) ARRAY JOIN words AS word, parts AS part, begins "
     "AS "
     "begin, ends AS end, contents AS content, texts AS text"},
    // The byte 1 is the identifier of the resource.
    {"IDENTITY",
     "if(position(text, '\\x01') = 0, text, concat(substring(text, 1, position(text, '\\x01') - 1), '\"', "
     "hex(part), '\"', substring(text, position(text, '\\x01') + 1)))"},
};

std::string GetQuery(const TView& view, const std::string& database) {
    std::string query(view.query);
    for (const auto& [word, expression] : expressions) {
        query = ReplaceAll(query, word, expression);
    }
    return ReplaceTimes(ReplaceAll(query, "@", database));
}

// Returns the engine of a table. The newest row of a loader has the highest number; other tables count
// changes.
std::string GetEngine(const TTable& table) {
    const std::string newest = table.name == "loader" ? "number" : "change";
    return "ENGINE = ReplacingMergeTree(" + newest + ") ORDER BY (" + std::string(table.key) +
           ") SETTINGS index_granularity = " + std::to_string(table.granularity);
}

std::string GetColumns(const TTable& table) {
    const std::string columns(table.columns);
    const bool hasChanges = table.name != "loader";
    return hasChanges ? columns + ", change UInt64, removed UInt8" : columns;
}

std::string MakeTable(const TTable& table, const std::string& name) {
    return "CREATE TABLE IF NOT EXISTS " + name + " (" + GetColumns(table) + ") " + GetEngine(table);
}

// Views hold no rows, so an older one is replaced.
std::string DropView(const TView& view, const std::string& database) {
    return "DROP TABLE IF EXISTS " + database + std::string(view.name);
}

std::string MakeView(const TView& view, const std::string& database) {
    return "CREATE VIEW " + database + std::string(view.name) + " AS " + GetQuery(view, database);
}

std::string MakeSchemaTable(const std::string& database) {
    return "CREATE TABLE IF NOT EXISTS " + database + std::string(schemaTable) +
           " (version UInt32) ENGINE = ReplacingMergeTree() ORDER BY version";
}

std::string MakeSchemaRow(const std::string& database) {
    return "INSERT INTO " + database + std::string(schemaTable) + " VALUES (" +
           std::to_string(clickHouseSchemaVersion) + ")";
}

void CheckName(std::string_view name, const std::string& what) {
    const bool isName = !name.empty() && std::ranges::all_of(name, [](char c) {
        return NVORHOST::IsAlphanumeric(c) || c == '_';
    });
    if (!isName) {
        throw TStoreError("the name of the " + what + " does not consist of letters, digits and underscores");
    }
}

}  // namespace

std::vector<std::string> GetTableNames() {
    std::vector<std::string> names{std::string(schemaTable)};
    for (const TTable& table : tables) {
        names.push_back(std::string(table.name) + "_rows");
        names.push_back(std::string(table.name) + "_local");
    }
    for (const TView& view : views) {
        names.emplace_back(view.name);
    }
    return names;
}

std::vector<std::string> MakeSchemaStatements() {
    std::vector<std::string> statements;
    for (const TTable& table : tables) {
        statements.push_back(MakeTable(table, std::string(table.name) + "_rows"));
    }
    for (const TView& view : views) {
        statements.push_back(DropView(view, ""));
        statements.push_back(MakeView(view, ""));
    }
    statements.push_back(MakeSchemaTable(""));
    statements.push_back(MakeSchemaRow(""));
    return statements;
}

std::string SchemaText(std::string_view cluster, std::string_view database) {
    CheckName(cluster, "cluster");
    CheckName(database, "database");
    const std::string start = std::string(database) + ".";
    std::string text = "CREATE DATABASE IF NOT EXISTS " + std::string(database) + ";\n";
    for (const TTable& table : tables) {
        const std::string name(table.name);
        text += MakeTable(table, start + name + "_local") + ";\n";
        text += "CREATE TABLE IF NOT EXISTS " + start + name + "_rows AS " + start + name +
                "_local ENGINE = Distributed(" + std::string(cluster) + ", " + std::string(database) + ", " +
                name + "_local, " + std::string(table.shard) + ");\n";
    }
    for (const TView& view : views) {
        text += DropView(view, start) + ";\n" + MakeView(view, start) + ";\n";
    }
    return text + MakeSchemaTable(start) + ";\n" + MakeSchemaRow(start) + ";\n";
}

}  // namespace NFLEET
