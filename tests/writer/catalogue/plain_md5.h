// A second implementation of MD5, written plainly from RFC 1321, to compare the writer's with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// How a message whose length is 56 modulo 64 is padded: with the further block that it needs, or without.
enum class EPadding { standard, oneBlockShort };

/// Returns the digest in upper-case hexadecimal.
std::string PlainMd5(std::string_view message, EPadding padding);
