// /proc/PID/stat: one line that tells what a process is doing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

struct TProcessStat {
    std::string name;              ///< field 2 without its parentheses; programs choose it, so any bytes
    char state = '?';              ///< field 3, the kernel's letter
    bool isKernelThread = false;   ///< of the flags in field 9
    std::int32_t priority = 0;     ///< field 18: 0..39, below 0 for real-time and deadline scheduling
    std::uint64_t startTicks = 0;  ///< field 22, since boot
};

/// Absent when a field is missing or is no number: a line is taken whole or not at all. The name may hold
/// blanks and parentheses; it ends at the last ")".
/// Source: proc(5), /proc/pid/stat.
std::optional<TProcessStat> ParseProcessStat(std::string_view text);

}  // namespace NVORHOST
