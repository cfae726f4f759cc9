// The common part of the fuzz targets: the declaration of the entry point and a check that ends the run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process, in every build type, if a property does not hold.
inline void Require(bool holds, const char* property) {
    if (!holds) {
        (void)std::fprintf(stderr, "property violated: %s\n", property);
        std::abort();
    }
}
