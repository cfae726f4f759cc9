// The service that issues entity identifiers, and the result of its last request. Process-wide, because the
// upload service of host/ is a static operation.
#pragma once

#include "host/export.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Sets the URL to which `TZETUpload::ZETGetEntityId` sends its HTTP POST requests, and forgets the last
/// failure. Absent, which is the default: identifiers are name-based UUIDs, derived without network access.
NKELVOR20_API void SetEntityService(std::optional<std::string> url);
/// The URL that was last set.
NKELVOR20_API const std::optional<std::string>& FindEntityService();

/// Why the last request failed, in one line. Absent if the service issued an identifier, even an empty one,
/// and before the first request.
NKELVOR20_API const std::optional<std::string>& FindEntityServiceFailure();
void SetEntityServiceFailure(std::optional<std::string> failure);

/// Checks that a URL is http or https and has a host. Returns what is wrong with it, without the URL itself,
/// which may contain a password; nullopt for a valid URL.
NKELVOR20_API std::optional<std::string> FindEntityServiceFault(std::string_view url);

}  // namespace NVORHOST
