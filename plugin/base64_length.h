// The size of Base64 text, which the encoder and whoever allocates for it must agree on.
#pragma once

#include <cstddef>

/// The characters that `byteCount` bytes encode to, without the terminating NUL. Wider than its argument:
/// from 3 GiB on the text is longer than an unsigned int can say.
constexpr std::size_t GetBase64Length(unsigned int byteCount) {
    const std::size_t wholeGroups = std::size_t{byteCount} / 3 * 4;
    return byteCount % 3 == 0 ? wholeGroups : wholeGroups + 4;
}
