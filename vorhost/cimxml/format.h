// Names and limits that writer and reader share and that the standard does not define.
#pragma once

#include <cstddef>
#include <string_view>

namespace NVORHOST {

/// Marks a property whose values XML text cannot represent: each of its VALUE elements contains the bytes of
/// the value in the encoding that is the value of the qualifier, which is always base64.
constexpr std::string_view encodingQualifierName = "NoxinfoEncoding";
constexpr std::string_view base64EncodingName = "base64";

/// Where a property comes from, as in the CIM schema: mapping_string.h.
constexpr std::string_view sourcesQualifierName = "MappingStrings";
/// How the search for the value of a property ended: the word of an EValueStatus. A property with this
/// qualifier and without a value is not set.
constexpr std::string_view statusQualifierName = "NoxinfoStatus";
/// The placeholder or malformed text that was found in place of the value.
constexpr std::string_view passedOverQualifierName = "NoxinfoPassedOver";
/// The elements that an array lacks.
constexpr std::string_view gapsQualifierName = "NoxinfoGaps";

/// Maximum length of the name of a class or property in bytes, so that it fits into a tag even if every
/// character is escaped.
constexpr std::size_t maxNameBytes = 4096;
/// Maximum number of properties of a class or instance. Setting one takes time linear in their number.
constexpr std::size_t maxProperties = 4096;

}  // namespace NVORHOST
