// The interface between the engine and its HTTP module, which is loaded on demand. Both are built together,
// so the interface may use C++ types.
#pragma once

#include "fleet/clickhouse/http.h"

#include <memory>

namespace NFLEET {

/// The type of the exported symbol `httpEntryName`.
using THttpEntry = void (*)(THttpCredentials&& credentials, std::unique_ptr<IHttp>& http);

inline constexpr char httpEntryName[] = "NFLEET_OpenHttp";

}  // namespace NFLEET
