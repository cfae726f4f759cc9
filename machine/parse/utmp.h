// /run/utmp: who is logged in.
#pragma once

#include <cstdint>
#include <string_view>

namespace NVORHOST {

/// How many whole records are user sessions (USER_PROCESS); a torn last record is not counted.
/// Shape:  records of 384 bytes in the byte order of the machine, type in the first two bytes.
/// Source: utmp(5), the layout of x86-64 and of every little-endian Linux with 32-bit utmp times.
std::uint32_t CountUserProcesses(std::string_view bytes);

}  // namespace NVORHOST
