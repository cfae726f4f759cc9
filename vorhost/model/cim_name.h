// Comparison and hashing of CIM names, which ignore ASCII case (DSP0004, 5.1).
#pragma once

#include "host/export.h"

#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// True if the names are equal except for the case of ASCII letters.
NKELVOR20_API bool EqualCimNames(std::string_view left, std::string_view right) noexcept;

struct TCimNameHash {
    using is_transparent = void;
    NKELVOR20_API std::size_t operator()(std::string_view name) const noexcept;
};

struct TCimNameEqual {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const noexcept {
        return EqualCimNames(left, right);
    }
};

}  // namespace NVORHOST
