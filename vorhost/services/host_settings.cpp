#include "vorhost/services/host_settings.h"

#include <utility>

namespace NVORHOST {
namespace {

THostSettings& Settings() {
    static THostSettings settings;
    return settings;
}

bool& Unreachable() {
    static bool isUnreachable = false;
    return isUnreachable;
}

}  // namespace

void SetHostSettings(THostSettings settings) {
    Settings() = std::move(settings);
    Unreachable() = false;
}

bool WasHostUnreachable() {
    return Unreachable();
}

void SetReachable(bool isReachable) {
    Unreachable() = !isReachable;
}

const THostSettings& GetHostSettings() {
    return Settings();
}

}  // namespace NVORHOST
