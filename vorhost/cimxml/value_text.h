// Converts scalar values of all intrinsic types to the text of a VALUE element and back.
#pragma once

#include "host/cim_value.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;

/// Returns the type with the name of a TYPE attribute, including "reference"; nullopt for an unknown name.
/// Case-sensitive. The inverse of `TCIMType::ToString`.
std::optional<TCIMValue::TCIMType> FindCimType(std::string_view name);

/// Parses the text of a VALUE element.
/// Shape:  integers are decimal without leading zeros, or hexadecimal after "0x" (any case), with an optional
///         sign; reals are decimal with optional sign, fraction and exponent, or "INF", "-INF", "NaN";
///         booleans are "true" and "false" in any case; a char16 is one character of one UTF-16 unit;
///         date-times have the 25-character form. White space around all of these is ignored, but is kept in
///         strings, references and char16.
/// Errors: throws TDocumentCause for a malformed text and for a number out of range, including a real that
///         would underflow to zero.
/// Source: DSP0201, VALUE element. Octal and binary numbers, which are MOF syntax, are malformed.
TCIMValue ParseValueText(TCIMValue::TCIMType type, const std::string& text);

/// Formats a scalar that is not null, so that `ParseValueText` gives an equal value.
/// Absent: nullopt for a value without such a text, and for text that XML cannot represent; `ValueBytes`
///         supports these values.
std::optional<std::string> ValueText(const TCIMValue& value);

/// Parses the output of `ValueBytes`.
/// Errors: throws TDocumentCause for a wrong number of bytes and for types that ValueBytes does not support.
TCIMValue ParseValueBytes(TCIMValue::TCIMType type, const std::string& bytes);

/// Returns the bytes of a scalar that is not null: strings and references unchanged; char16 and reals (IEEE
/// 754) with the most significant byte first.
/// Errors: throws TDocumentCause for other types, of which only a date-time with invalid fields lacks a text.
std::string ValueBytes(const TCIMValue& value);

}  // namespace NVORHOST
