// Queries in the language of the engine.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"

#include <string_view>

namespace NFLEET {

/// Runs one query, which must not write. Bytes that are not text are shown as hexadecimal digits.
/// Errors: throws TStoreError.
TAnswer AskSql(IFleetStore& store, std::string_view query);

}  // namespace NFLEET
