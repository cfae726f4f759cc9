#include "fleet/sqlite/sqlite_engine.h"

#include "fleet/sqlite/schema.h"
#include "fleet/sqlite/sqlite_store.h"

namespace NFLEET {

std::unique_ptr<IFleetStore> OpenSqliteStore(const std::string& path, std::int64_t maxPages) {
    return std::make_unique<TSqliteEngine>(path, maxPages);
}

// With WAL, synchronous NORMAL may lose the last transactions in a power failure, and never damages the
// database: those inventories are loaded again.
TSqliteEngine::TSqliteEngine(const std::string& path, std::int64_t maxPages)
    : connection_(path, TConnection::EAccess::readWrite) {
    (void)ReadSchemaVersion(connection_);
    connection_.Execute(
        "PRAGMA synchronous = NORMAL; PRAGMA cache_size = -65536; PRAGMA temp_store = MEMORY;"
        " PRAGMA wal_autocheckpoint = 8192");
    if (maxPages != unlimitedPages) {
        connection_.Execute("PRAGMA max_page_count = " + std::to_string(maxPages));
    }
}

int TSqliteEngine::GetSchemaVersion() {
    return ReadSchemaVersion(connection_);
}

void TSqliteEngine::Migrate() {
    MigrateSchema(connection_);
}

TTables& TSqliteEngine::GetTables() {
    if (tables_ == nullptr) {
        const int version = ReadSchemaVersion(connection_);
        if (version < sqliteSchemaVersion) {
            FailStore(GetName(), version == 0 ? "holds no inventories yet"
                                              : "was made by an older version and needs an update");
        }
        if (version > sqliteSchemaVersion) {
            MigrateSchema(connection_);  // throws the reason
        }
        tables_ = std::make_unique<TTables>(connection_);
    }
    return *tables_;
}

}  // namespace NFLEET
