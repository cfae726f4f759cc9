#include "fleet/clickhouse/schema.h"

#include "fleet/clickhouse/client.h"
#include "text/ascii.h"

#include <algorithm>

namespace NFLEET {
namespace {

struct TTable {
    std::string_view name;
    std::string_view columns;      ///< apart from `change` and `removed`
    std::string_view key;          ///< columns that identify a row, in the order of the table
    std::string_view shard;        ///< number that chooses the server of a cluster
    std::string_view viewColumns;  ///< columns of the view
};

constexpr std::string_view byMachine = "cityHash64(machine)";

// clang-format off
constexpr TTable tables[] = {
    {"machine",
     "id FixedString(16), key String, rule UInt8, name String, vendor String, model String, serial String, uuid String, "
     "first Int64, last Int64, uses_snapshot UInt8",
     "id", "cityHash64(id)",
     "lower(hex(id)) AS id, key, rule, name, vendor, model, serial, uuid, first, last, uses_snapshot"},
    {"alias",
     "machine FixedString(16), key String, target FixedString(16)",
     "machine", byMachine,
     "lower(hex(machine)) AS machine, key, lower(hex(target)) AS target"},
    {"head",
     "machine FixedString(16), scope UInt8, time Int64, digest FixedString(16), content FixedString(16), "
     "name String, vendor String, model String, serial String, uuid String",
     "machine, scope", byMachine,
     "lower(hex(machine)) AS machine, scope, time, lower(hex(digest)) AS digest, lower(hex(content)) AS content, "
     "name, vendor, model, serial, uuid"},
    {"inventory",
     "machine FixedString(16), scope UInt8, time Int64, digest FixedString(16), source String, "
     "volatile_resource Array(FixedString(16)), volatile_position Array(UInt32), volatile_name Array(String), "
     "volatile_type Array(String), volatile_shape Array(UInt8), volatile_values Array(Array(String))",
     "machine, scope, time", byMachine,
     "lower(hex(machine)) AS machine, scope, time, lower(hex(digest)) AS digest, source, volatile_name, "
     "volatile_type, volatile_values"},
    {"version",
     "digest FixedString(16), type String, list String, id Nullable(String), property_name Array(String), "
     "property_type Array(String), property_shape Array(UInt8), property_values Array(Array(String)), "
     "identifying Array(UInt8)",
     "digest", "cityHash64(digest)",
     "lower(hex(digest)) AS digest, type, list, id, property_name, property_type, property_values"},
    {"presence",
     "machine FixedString(16), scope UInt8, type String, resource FixedString(16), since Int64, until Int64, "
     "version FixedString(16), identity Array(Array(String))",
     "machine, scope, type, resource, since", byMachine,
     "lower(hex(machine)) AS machine, scope, type, lower(hex(resource)) AS resource, since, until, "
     "lower(hex(version)) AS version, identity"},
    // Finds machines by the start of a digest of a value; rows of values that a machine had once stay.
    {"identity",
     "value UInt64, machine FixedString(16)",
     "value, machine", byMachine, {}},
    // The claims of loaders; one server of a cluster has them all.
    {"loader",
     "loader FixedString(16), number UInt64, time UInt32",
     "loader", "0", {}},
};
// clang-format on

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

std::string MakeView(const TTable& table, const std::string& database) {
    return "CREATE VIEW IF NOT EXISTS " + database + std::string(table.name) + " AS SELECT " +
           std::string(table.viewColumns) + " FROM " + database + std::string(table.name) +
           "_rows FINAL WHERE removed = 0";
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
        for (const char* ending : {"", "_rows", "_local"}) {
            names.push_back(std::string(table.name) + ending);
        }
    }
    return names;
}

std::vector<std::string> MakeSchemaStatements() {
    std::vector<std::string> statements;
    for (const TTable& table : tables) {
        statements.push_back(MakeTable(table, std::string(table.name) + "_rows"));
        if (!table.viewColumns.empty()) {
            statements.push_back(MakeView(table, ""));
        }
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
        if (!table.viewColumns.empty()) {
            text += MakeView(table, start) + ";\n";
        }
    }
    return text + MakeSchemaTable(start) + ";\n" + MakeSchemaRow(start) + ";\n";
}

}  // namespace NFLEET
