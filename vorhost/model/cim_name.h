// CIM names (DSP0004, 5.1) compare without regard to ASCII case; these functors let containers do so too.
#pragma once

#include "host/export.h"

#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// True when both names are equal but for the case of ASCII letters. Other bytes compare as they are.
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
