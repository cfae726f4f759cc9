// Parses /run/utmp: the sessions of users.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace NVORHOST {

/// A field of a utmp record.
struct TUtmpField {
    std::size_t offset, size;
};

/// The layout of a record. Texts end at the first NUL or fill their field. The address has 4 bytes, followed
/// by zeros, or 16.
/// Source: utmp(5), the layout of x86-64 and of every little-endian Linux with 32-bit times.
inline constexpr std::size_t utmpRecordBytes = 384;
inline constexpr TUtmpField utmpUser{44, 32};
inline constexpr TUtmpField utmpHost{76, 256};
inline constexpr TUtmpField utmpAddress{348, 16};

/// True if `record` is the session of a user (USER_PROCESS). Records of other types belong to the system.
bool IsUserSession(std::string_view record);

/// Returns the number of user sessions. A truncated last record is not counted.
std::uint32_t CountUserProcesses(std::string_view bytes);

}  // namespace NVORHOST
