// Detects builds with the address sanitizer. Its runtime reads /proc and needs more address space than the
// limits of some tests allow.
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
