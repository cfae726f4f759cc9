// A fleet in ClickHouse.
#pragma once

#include "fleet/clickhouse/address.h"
#include "fleet/clickhouse/loader_claim.h"
#include "fleet/store/fleet_store.h"

#include <memory>
#include <string_view>

namespace NFLEET {

/// Opens the store at "clickhouse://HOST:PORT/DATABASE"; see ParseClickHouseAddress and
/// ReadClickHouseCredentials. The server is first contacted by the first operation. Errors: throws
/// std::runtime_error.
std::unique_ptr<IFleetStore> OpenClickHouseStore(std::string_view url);

/// OpenClickHouseStore with given credentials and times.
std::unique_ptr<IFleetStore> OpenClickHouseStore(const TClickHouseAddress& address,
                                                 THttpCredentials credentials, TClaimTimes times = {});

}  // namespace NFLEET
