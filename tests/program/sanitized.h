// Whether the programs under test are built with the address sanitizer, whose runtime needs more address
// space than a limit leaves and reads /proc by itself.
#pragma once

namespace NVORHOST {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool isSanitized = true;
#elif defined(__has_feature)
inline constexpr bool isSanitized = __has_feature(address_sanitizer) != 0;
#else
inline constexpr bool isSanitized = false;
#endif

}  // namespace NVORHOST
