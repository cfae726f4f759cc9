// A second implementation of Base64, bit by bit and slow, to compare the plug-in's with. It shares only the
// alphabet of RFC 4648 with it.
#pragma once

#include <string>
#include <string_view>

std::string PlainBase64Encode(std::string_view bytes);
/// Decodes padded text. Throws std::invalid_argument for malformed text.
std::string PlainBase64Decode(std::string_view text);
