// Scalar values as the text of a VALUE element, both ways, for all intrinsic types.
#pragma once

#include "host/cim_value.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;

/// The type of a TYPE attribute, "reference" included; nullopt for an unknown name. Case matters.
std::optional<TCIMValue::TCIMType> FindCimType(std::string_view name);

/// The name of a type in a TYPE attribute, as `TCIMType::ToString` has it.
std::string_view CimTypeName(TCIMValue::TCIMType type);

/// Reads the text of a VALUE element.
/// Shape:  integers are decimal without leading zeros, or hexadecimal after "0x" (any case), with an
///         optional sign; reals are decimal with optional sign, fraction and exponent, or "INF", "-INF",
///         "NaN"; booleans are "true" and "false" in any case; a char16 is one character of one UTF-16
///         unit; date-times have the 25-character form. White space around all of these is ignored, but
///         is kept in strings, references and char16.
/// Errors: throws TCimXmlCause for a malformed text, and for a number out of the type's range: a real,
///         too, that is so small that its type would make it zero.
/// Source: DSP0201, VALUE element; octal and binary forms belong to MOF and are refused.
TCIMValue ParseValueText(TCIMValue::TCIMType type, const std::string& text);

/// The text of a scalar that is not null, such that `ParseValueText` gives an equal value. Nullopt for a
/// value that has no such text, or one that XML cannot carry: then `ValueBytes` has it.
std::optional<std::string> ValueText(const TCIMValue& value);

/// Reads what `ValueBytes` gives. Throws TCimXmlCause for a wrong number of bytes and for other types.
TCIMValue ParseValueBytes(TCIMValue::TCIMType type, const std::string& bytes);

/// The bytes of a scalar that is not null: strings and references as they are; char16 and reals (their IEEE
/// 754 form) with the most significant byte first. Errors: throws TCimXmlCause for the other types, which
/// only a date-time without a valid text form needs.
std::string ValueBytes(const TCIMValue& value);

}  // namespace NVORHOST
