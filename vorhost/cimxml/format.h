// The names and limits of this format that the standard does not give, and that writer and reader must agree
// on.
#pragma once

#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// A property with this qualifier has values that XML text cannot carry: each of its VALUE elements holds the
/// value's bytes in the encoding that the qualifier names, which is always base64.
constexpr std::string_view encodingQualifierName = "NoxinfoEncoding";
constexpr std::string_view base64EncodingName = "base64";

/// Elements may stand this deep, the root included.
constexpr std::size_t maxElementDepth = 64;
/// A tag, comment or processing instruction may be about this long, in bytes; values may have any length.
constexpr std::size_t maxMarkupBytes = std::size_t{64} * 1024;
/// A tag may have this many attributes: looking for one that stands twice takes time with the square of them.
constexpr std::size_t maxAttributes = 64;
/// A name of a class or property may be this long, in bytes, so that it fits into a tag however it is
/// escaped.
constexpr std::size_t maxNameBytes = 4096;
/// A class or an instance may have this many properties: setting one takes time in proportion to them all.
constexpr std::size_t maxProperties = 4096;

}  // namespace NVORHOST
