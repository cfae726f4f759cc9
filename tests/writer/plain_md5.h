// A second MD5, written for plainness from the description in RFC 1321, to hold the writer's against.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Whether the padding of a message whose length is 56 modulo 64 takes the further block that it needs.
enum class EPadding { standard, oneBlockShort };

/// Upper-case hexadecimal digest.
std::string PlainMd5(std::string_view message, EPadding padding);
