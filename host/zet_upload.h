// The host's upload service, as far as plug-ins need it.
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

    /// The identifier under which data of one kind is accepted for one identity; may be empty. A host may
    /// throw TVORException with `serviceUnavailable` when the service that issues it gives none.
    static std::string ZETGetEntityId(std::string dataKind, std::string contentType, std::string identity,
                                      std::string endpointPath, std::string inventoryPath);
};

}  // namespace NKELVOR20
