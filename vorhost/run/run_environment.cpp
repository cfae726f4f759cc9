#include "vorhost/run/run_environment.h"

#include "host/os_specific.h"
#include "vorhost/upload/entity_service.h"

#include <utility>

namespace NVORHOST {
namespace {

std::string ChooseIdentity(const TRunSettings& settings) {
    return settings.identity ? *settings.identity : NKELVOR20::TOSSpecific::GetEnvironment(identityVariable);
}

}  // namespace

TRunEnvironment::TRunEnvironment(const TRunSettings& settings)
    : previousSettings_(GetHostSettings()),
      previousService_(FindEntityService()),
      identity_(ChooseIdentity(settings)) {
    THostSettings host;
    host.localTime = settings.localTime;
    host.identity = identity_;
    host.reachability =
        settings.reachability.value_or(HasIdentity() ? EReachability::network : EReachability::yes);
    SetHostSettings(std::move(host));
    SetEntityService(settings.entityService);
}

TRunEnvironment::~TRunEnvironment() {
    SetEntityService(std::move(previousService_));
    SetHostSettings(std::move(previousSettings_));
}

void TRunEnvironment::SetCollected(boost::shared_ptr<NKELVOR20::ICIMNamespace> collected) {
    THostSettings host = GetHostSettings();
    host.collected = std::move(collected);
    SetHostSettings(std::move(host));
}

}  // namespace NVORHOST
