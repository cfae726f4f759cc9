// What a user may ask of a collection: which machine, which collectors, how long.
#pragma once

#include "host/cim_date_time.h"
#include "machine/collect/run/collectors.h"

#include <chrono>
#include <optional>
#include <string>

namespace NVORHOST {

struct TMachineOptions {
    std::string sysroot = "/";
    std::optional<NKELVOR20::TCIMDateTime> localTime;
    TCollectorChoice collectors;
    /// How long sources may take to answer; absent: as long as they do.
    std::optional<std::chrono::milliseconds> deadline = std::chrono::seconds(10);
};

}  // namespace NVORHOST
