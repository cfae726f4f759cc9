// The tables of a database and their versions.
#pragma once

#include "fleet/sqlite/connection.h"

#include <span>
#include <string_view>

namespace NFLEET {

/// Marks databases of this program: the text "nxfl".
inline constexpr std::int64_t applicationId = 0x6E78666C;

/// The statements that bring a database from one version to the next one; the first row makes version 1 of
/// nothing.
std::span<const std::string_view> GetMigrations();

/// Returns the version of a database; 0 without tables. Errors: throws TStoreError for a file that is not a
/// database, and for a database of another program.
int ReadSchemaVersion(TConnection& connection);

/// Brings a database to the newest version in one transaction. Errors: throws TStoreError, also for a
/// database of a newer version, which stays unchanged.
void MigrateSchema(TConnection& connection);

}  // namespace NFLEET
