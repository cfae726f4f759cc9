// Base64 once more, bit by bit and without tables of its own making: slow, plain, and nothing in common with
// the plug-in's encoder but the alphabet of RFC 4648.
#pragma once

#include <string>
#include <string_view>

std::string PlainBase64Encode(std::string_view bytes);
/// Throws std::invalid_argument for text that no encoder writes.
std::string PlainBase64Decode(std::string_view text);
