// Where the embedded host's upload service gets entity identifiers from.
#pragma once

#include "host/export.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// With a URL, `TZETUpload::ZETGetEntityId` asks that service by HTTP POST; with an empty one (the default)
/// it derives a name-based UUID without leaving the machine.
NKELVOR20_API void SetEntityService(std::string url);
/// The URL last set; empty when none is.
const std::string& GetEntityService();

/// Why the service issued no identifier when it was last asked, in one line; empty when it issued one,
/// however empty, and before it is asked. Setting a service clears it.
NKELVOR20_API const std::string& GetEntityServiceFailure();
void SetEntityServiceFailure(std::string failure);

/// Why no service can be asked at this URL, without the URL itself, which may hold a password; empty for an
/// http or https URL with a host.
NKELVOR20_API std::string FindEntityServiceFault(std::string_view url);

}  // namespace NVORHOST
