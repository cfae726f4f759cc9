// Names and limits that writer and reader share and that the standard does not define.
#pragma once

#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// Marks a property whose values XML text cannot represent: each of its VALUE elements contains the bytes of
/// the value in the encoding that is the value of the qualifier, which is always base64.
constexpr std::string_view encodingQualifierName = "NoxinfoEncoding";
constexpr std::string_view base64EncodingName = "base64";

/// Maximum length of the name of a class or property in bytes, so that it fits into a tag even if every
/// character is escaped.
constexpr std::size_t maxNameBytes = 4096;
/// Maximum number of properties of a class or instance. Setting one takes time linear in their number.
constexpr std::size_t maxProperties = 4096;

}  // namespace NVORHOST
