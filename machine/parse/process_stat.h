// Parses /proc/PID/stat: the state of a process in one line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

struct TProcessStat {
    std::string name;              ///< field 2 without its parentheses; any bytes, as programs choose it
    char state = '?';              ///< field 3, one letter
    bool isKernelThread = false;   ///< field 9, flag PF_KTHREAD
    std::int32_t priority = 0;     ///< field 18: 0..39, below 0 for real-time and deadline scheduling
    std::uint64_t startTicks = 0;  ///< field 22, clock ticks since boot
};

/// Returns nullopt if a field is missing or malformed: a line is accepted as a whole or not at all. The name
/// may contain blanks and parentheses; it ends at the last ")".
/// Source: proc(5), /proc/pid/stat.
std::optional<TProcessStat> ParseProcessStat(std::string_view text);

}  // namespace NVORHOST
