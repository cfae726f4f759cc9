// The chosen entity service; one for the process, because the upload service is a static operation.
#include "vorhost/upload/entity_service.h"

#include <utility>

namespace NVORHOST {
namespace {

std::string& ServiceUrl() {
    static std::string url;
    return url;
}

}  // namespace

void SetEntityService(std::string url) {
    ServiceUrl() = std::move(url);
}

const std::string& GetEntityService() {
    return ServiceUrl();
}

}  // namespace NVORHOST
