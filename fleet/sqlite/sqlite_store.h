// A fleet in one SQLite file.
#pragma once

#include "fleet/store/fleet_store.h"

#include <cstdint>
#include <memory>
#include <string>

namespace NFLEET {

/// The version of the schema that this program writes.
inline constexpr int sqliteSchemaVersion = 1;

/// A file size that no database reaches.
inline constexpr std::int64_t unlimitedPages = 0;

/// Opens or creates a database, which `maxPages` limits to a number of pages of 8 KiB. Directories of the
/// path must exist. Call Migrate before anything else on a new one. Errors: throws TStoreError for a file
/// that is not a database, or that belongs to another program.
std::unique_ptr<IFleetStore> OpenSqliteStore(const std::string& path, std::int64_t maxPages = unlimitedPages);

}  // namespace NFLEET
