// The length of Base64 text, on which the encoder and its callers must agree.
#pragma once

#include <cstddef>

/// Returns the number of characters that `byteCount` bytes encode to, without the terminating NUL. The result
/// is wider than the argument, because from 3 GiB on the length exceeds an unsigned int.
constexpr std::size_t GetBase64Length(unsigned int byteCount) {
    const std::size_t wholeGroups = std::size_t{byteCount} / 3 * 4;
    return byteCount % 3 == 0 ? wholeGroups : wholeGroups + 4;
}
