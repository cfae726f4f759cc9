// The store that a URL names.
#pragma once

#include "fleet/store/fleet_store.h"

#include <memory>
#include <optional>
#include <string>

namespace NFLEET {

enum class EStoreUse {
    asking,   ///< the store must exist
    loading,  ///< a missing store, and its directory, are made
};

/// True for the URL of a ClickHouse server.
bool IsClickHouse(const std::optional<std::string>& url);

/// Opens the store of a URL, "sqlite:FILE" or "clickhouse://HOST:PORT/DATABASE", or the default one, and
/// brings its schema up to date.
/// Errors: throws TStoreError, and std::runtime_error for a URL of another form.
std::unique_ptr<IFleetStore> OpenStore(const std::optional<std::string>& url, EStoreUse use);

}  // namespace NFLEET
