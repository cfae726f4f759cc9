#include "fleet/clickhouse/schema.h"

#include "fleet/clickhouse/client.h"
#include "text/ascii.h"

#include <algorithm>

namespace NFLEET {
namespace {

struct TTable {
    std::string_view name;
    std::string_view columns;  ///< apart from `change` and `removed`
    std::string_view key;      ///< columns that identify a row, in the order of the table
    std::string_view shard;    ///< number that chooses the server of a cluster
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
     "id", "cityHash64(id)"},
    {"alias",
     "machine FixedString(16), key String, target FixedString(16)",
     "machine", byMachine},
    {"head",
     "machine FixedString(16), scope UInt8, time Int64, digest FixedString(16), content FixedString(16), "
     "name String, vendor String, model String, serial String, uuid String",
     "machine, scope", byMachine},
    {"inventory",
     "machine FixedString(16), scope UInt8, time Int64, digest FixedString(16), source String, "
     "volatile_resource Array(FixedString(16)), volatile_position Array(UInt32), volatile_name Array(String), "
     "volatile_type Array(String), volatile_shape Array(UInt8), volatile_values Array(Array(String))",
     "machine, scope, time", byMachine},
    {"version",
     "digest FixedString(16), type String, list String, id Nullable(String), property_name Array(String), "
     "property_type Array(String), property_shape Array(UInt8), property_values Array(Array(String)), "
     "identifying Array(UInt8)",
     "digest", "cityHash64(digest)"},
    {"presence",
     "machine FixedString(16), scope UInt8, type String, resource FixedString(16), since Int64, until Int64, "
     "version FixedString(16), identity Array(Array(String))",
     "machine, scope, type, resource, since", byMachine},
    // Finds machines by the start of a digest of a value; rows of values that a machine had once stay.
    {"identity",
     "value UInt64, machine FixedString(16)",
     "value, machine", byMachine},
    // The claims of loaders; one server of a cluster has them all.
    {"loader",
     "loader FixedString(16), number UInt64, time UInt32",
     "loader", "0"},
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
     "FROM (SELECT machine AS id, scope AS kind, type, resource AS part, since AS begin, until AS end, "
     "version AS content, identity FROM @presence_rows FINAL WHERE removed = 0) "
     "ALL INNER JOIN (SELECT id, name AS machine_name, model FROM @machine_rows FINAL WHERE removed = 0) USING id"},
    {"properties",
     "SELECT version, name, type, element, value "
     "FROM (SELECT hex(digest) AS version, name, kind AS type, elements FROM @version_rows FINAL "
     "ARRAY JOIN property_name AS name, property_type AS kind, property_values AS elements WHERE removed = 0) "
     "ARRAY JOIN elements AS value, arrayEnumerate(elements) AS element"},
    {"changes",
     "SELECT TIME(at) AS time, if(is_begin, 'begins', 'ends') AS change, hex(id) AS machine, SCOPE AS scope, type, "
     "hex(part) AS resource, hex(content) AS version, identity "
     "FROM (SELECT machine AS id, scope AS kind, type, resource AS part, if(is_begin, since, until) AS at, "
     "version AS content, identity, arrayJoin([1, 0]) AS is_begin FROM @presence_rows FINAL WHERE removed = 0) "
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

std::string GetQuery(const TView& view, const std::string& database) {
    const std::string scope = "if(kind = 1, 'hardware', if(kind = 2, 'system-information', 'snapshot'))";
    return ReplaceTimes(ReplaceAll(ReplaceAll(std::string(view.query), "@", database), "SCOPE", scope));
}

// Returns the engine of a table. The newest row of a loader has the highest number; other tables count
// changes.
std::string GetEngine(const TTable& table) {
    const std::string newest = table.name == "loader" ? "number" : table.name == "identity" ? "" : "change";
    return "ENGINE = ReplacingMergeTree(" + newest + ") ORDER BY (" + std::string(table.key) + ")";
}

std::string GetColumns(const TTable& table) {
    const std::string columns(table.columns);
    const bool hasChanges = table.name != "loader" && table.name != "identity";
    return hasChanges ? columns + ", change UInt64, removed UInt8" : columns;
}

std::string MakeTable(const TTable& table, const std::string& name) {
    return "CREATE TABLE IF NOT EXISTS " + name + " (" + GetColumns(table) + ") " + GetEngine(table);
}

std::string MakeView(const TView& view, const std::string& database) {
    return "CREATE VIEW IF NOT EXISTS " + database + std::string(view.name) + " AS " +
           GetQuery(view, database);
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
        text += MakeView(view, start) + ";\n";
    }
    return text + MakeSchemaTable(start) + ";\n" + MakeSchemaRow(start) + ";\n";
}

}  // namespace NFLEET
