// The writer's one way to the host's log.
#pragma once

#include "host/root_object.h"

#include <string>
#include <utility>

/// Logs a debug or warning line, level 3. What the logger throws passes.
inline void LogWarning(std::string message) {
    constexpr int debugLevel = 3;
    NKELVOR20::TRootObject::GetCoreLogger()->Log(debugLevel, std::move(message));
}
