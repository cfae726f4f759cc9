// Where the embedded host's upload service gets entity identifiers from.
#pragma once

#include "host/export.h"

#include <string>

namespace NVORHOST {

/// With a URL, `TZETUpload::ZETGetEntityId` asks that service by HTTP POST; with an empty one (the default)
/// it derives a name-based UUID without leaving the machine.
NKELVOR20_API void SetEntityService(std::string url);
/// The URL last set; empty when none is.
const std::string& GetEntityService();

}  // namespace NVORHOST
