// The one object behind the static services.
#include "vorhost/services/host_settings.h"

#include <utility>

namespace NVORHOST {
namespace {

THostSettings& Settings() {
    static THostSettings settings;
    return settings;
}

}  // namespace

void SetHostSettings(THostSettings settings) {
    Settings() = std::move(settings);
}

const THostSettings& GetHostSettings() {
    return Settings();
}

}  // namespace NVORHOST
