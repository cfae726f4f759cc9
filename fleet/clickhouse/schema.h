// The tables of a fleet in ClickHouse, on one server or on the servers of a cluster.
//
// Rows are in tables named NAME_rows, which keep every change of a row until the server merges it with the
// newer one: they are read with FINAL and `removed = 0`. Views for people do so. On a cluster, NAME_rows is a
// Distributed table over the tables NAME_local of all servers, sharded by machine; versions are sharded by
// digest.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// The version of the schema that this program writes.
inline constexpr int clickHouseSchemaVersion = 1;

/// The table with the version of the schema, which is made last.
inline constexpr std::string_view schemaTable = "fleet_schema";

/// Returns the names of all tables and views, on one server or on a cluster.
std::vector<std::string> GetTableNames();

/// Returns the statements that make the tables on one server, in a database that exists, or bring those of an
/// older version up to date. Idempotent.
std::vector<std::string> MakeSchemaStatements();

/// Returns the statements that make the database and its tables on one server of a cluster, as a text in
/// which each ends with ";" at the end of a line. They are run on every server, again for each new version of
/// the schema. `cluster` is a name in the servers' configuration. Idempotent. Errors: throws TStoreError for
/// names that are not letters, digits and underscores.
std::string SchemaText(std::string_view cluster, std::string_view database);

}  // namespace NFLEET
