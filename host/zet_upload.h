// The operation of the host's upload service that plug-ins use.
//
// Binary contract: a static operation exported by the host's upload library.
#pragma once

#include "host/export.h"

#include <string>

namespace NKELVOR20 {

/// The upload service: static operations only.
class NKELVOR20_API TZETUpload {
  public:
    TZETUpload() = delete;

    /// Returns the identifier under which data of one kind is accepted for one identity; may be empty. A host
    /// may throw TVORException with `serviceUnavailable` if its service issues none.
    static std::string ZETGetEntityId(std::string dataKind, std::string contentType, std::string identity,
                                      std::string endpointPath, std::string inventoryPath);
};

}  // namespace NKELVOR20
