// The levels of log lines that host and plug-ins agree on.
#pragma once

namespace NKELVOR20 {

/// A failure that ends a request.
inline constexpr int hardFailureLevel = 0;
/// Debug and warning lines.
inline constexpr int diagnosticLevel = 3;

}  // namespace NKELVOR20
