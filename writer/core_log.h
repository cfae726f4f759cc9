// Writes to the host's log.
#pragma once

#include "host/log_levels.h"
#include "host/root_object.h"

#include <string>
#include <utility>

/// Logs a warning. Exceptions of the logger pass.
inline void LogWarning(std::string message) {
    NKELVOR20::TRootObject::GetCoreLogger()->Log(NKELVOR20::diagnosticLevel, std::move(message));
}
