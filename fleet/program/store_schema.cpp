#include "fleet/program/store_schema.h"

#include "fleet/clickhouse/address.h"
#include "fleet/clickhouse/schema.h"
#include "fleet/program/store_url.h"
#include "fleet/sqlite/schema.h"
#include "fleet/sqlite/sqlite_store.h"

#include <stdexcept>

namespace NFLEET {
namespace {

void WriteSqliteSchema(std::ostream& out) {
    out << "-- noxinfo fleet, SQLite, version " << sqliteSchemaVersion << '\n';
    for (const std::string_view statements : GetMigrations()) {
        out << statements << '\n';
    }
}

void WriteClickHouseSchema(const std::string& url, const std::optional<std::string>& cluster,
                           std::ostream& out) {
    const TClickHouseAddress address = ParseClickHouseAddress(url);
    out << "-- noxinfo fleet, ClickHouse, version " << clickHouseSchemaVersion << '\n';
    if (cluster) {
        out << SchemaText(*cluster, address.database);
        return;
    }
    for (const std::string& statement : MakeSchemaStatements()) {
        out << statement << ";\n";
    }
}

}  // namespace

void WriteSchema(const std::optional<std::string>& url, const std::optional<std::string>& cluster,
                 std::ostream& out) {
    if (IsClickHouse(url)) {
        WriteClickHouseSchema(*url, cluster, out);
        return;
    }
    if (cluster) {
        throw std::runtime_error("--cluster requires --store clickhouse://HOST:PORT/DATABASE");
    }
    WriteSqliteSchema(out);
}

}  // namespace NFLEET
