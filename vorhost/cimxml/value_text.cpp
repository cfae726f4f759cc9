#include "vorhost/cimxml/value_text.h"

#include "documents/document_error.h"
#include "documents/xml_text.h"
#include "text/ascii.h"
#include "text/utf8.h"
#include "vorhost/model/cim_name.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;
using TOptionalText = std::optional<std::string>;

constexpr std::string_view trueText = "TRUE";
constexpr std::string_view falseText = "FALSE";
constexpr std::string_view infinityText = "INF";
constexpr std::string_view minusInfinityText = "-INF";
constexpr std::string_view notANumberText = "NaN";

[[noreturn]] void ThrowMalformed(std::string_view text, TCIMType type) {
    throw TDocumentCause(Quote(text) + " is not a valid " + type.ToString());
}

[[noreturn]] void ThrowOutOfRange(std::string_view text, TCIMType type) {
    throw TDocumentCause(Quote(text) + " is out of range for " + type.ToString());
}

// Removes a leading sign; returns true for "-".
bool TakeSign(std::string_view& text) {
    const char sign = text.empty() ? '\0' : text.front();
    if (sign == '-' || sign == '+') {
        text.remove_prefix(1);
    }
    return sign == '-';
}

// Removes a leading "0x"; returns the radix.
int TakeRadix(std::string_view& text) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        return 16;
    }
    return 10;
}

// Sign and absolute value of an integer of any type.
struct TMagnitude {
    bool isNegative = false;
    std::uint64_t value = 0;
};

TMagnitude ParseMagnitude(std::string_view whole, TCIMType type) {
    std::string_view digits = whole;
    TMagnitude magnitude;
    magnitude.isNegative = TakeSign(digits);
    const int radix = TakeRadix(digits);
    const bool isOctal = radix == 10 && digits.size() > 1 && digits.front() == '0';
    const char* const end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, magnitude.value, radix);
    if (read.ptr != end || read.ec == std::errc::invalid_argument || isOctal) {
        ThrowMalformed(whole, type);
    }
    if (read.ec == std::errc::result_out_of_range) {
        ThrowOutOfRange(whole, type);
    }
    return magnitude;
}

template <std::integral T>
TCIMValue ParseInteger(TCIMType type, const std::string& text) {
    const std::string_view whole = TrimXmlSpace(text);
    const TMagnitude magnitude = ParseMagnitude(whole, type);
    const std::uint64_t highest = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    const std::uint64_t lowest = std::is_signed_v<T> ? highest + 1 : 0;  // absolute value
    if (magnitude.value > (magnitude.isNegative ? lowest : highest)) {
        ThrowOutOfRange(whole, type);
    }
    return TCIMValue(static_cast<T>(magnitude.isNegative ? 0 - magnitude.value : magnitude.value));
}

TOptionalText IntegerText(const TCIMValue& value) {
    return value.ToString(10);
}

// True for the NaN that "NaN" is parsed as. Other NaNs differ in their bits.
template <std::floating_point T>
bool IsPlainNan(T number) {
    using TBits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    return std::bit_cast<TBits>(number) == std::bit_cast<TBits>(std::numeric_limits<T>::quiet_NaN());
}

template <std::floating_point T>
std::optional<T> FindSpecialReal(std::string_view text) {
    using TLimits = std::numeric_limits<T>;
    constexpr struct {
        std::string_view text;
        T value;
    } rows[] = {{infinityText, TLimits::infinity()},
                {minusInfinityText, -TLimits::infinity()},
                {notANumberText, TLimits::quiet_NaN()}};
    const auto* const row = std::ranges::find(rows, text, [](const auto& each) { return each.text; });
    return row == std::end(rows) ? std::nullopt : std::optional(row->value);
}

template <std::floating_point T>
TCIMValue ParseReal(TCIMType type, const std::string& text) {
    const std::string_view whole = TrimXmlSpace(text);
    if (const auto special = FindSpecialReal<T>(whole)) {
        return TCIMValue(*special);
    }
    std::string_view digits = whole;
    const bool isNegative = TakeSign(digits);
    const char* const end = digits.data() + digits.size();
    T number = 0;
    // from_chars also accepts "inf", "nan" and a second sign, none of which starts with a digit or a point.
    const bool startsNumber = !digits.empty() && (IsDigit(digits.front()) || digits.front() == '.');
    const auto read = std::from_chars(digits.data(), end, number);
    if (!startsNumber || read.ptr != end || read.ec == std::errc::invalid_argument) {
        ThrowMalformed(whole, type);
    }
    if (read.ec == std::errc::result_out_of_range || std::isinf(number)) {
        ThrowOutOfRange(whole, type);
    }
    return TCIMValue(isNegative ? -number : number);
}

template <std::floating_point T>
TOptionalText RealText(const TCIMValue& value) {
    const auto number = static_cast<T>(value.GetReal());
    if (std::isnan(number)) {
        return IsPlainNan(number) ? TOptionalText(notANumberText) : std::nullopt;
    }
    if (std::isinf(number)) {
        return std::string(number < 0 ? minusInfinityText : infinityText);
    }
    std::string text = value.ToString(10);
    if (text.find('.') == std::string::npos) {  // the standard requires a fraction
        text.insert(std::min(text.find('e'), text.size()), ".0");
    }
    return text;
}

TCIMValue ParseBoolean(TCIMType type, const std::string& text) {
    const std::string_view whole = TrimXmlSpace(text);
    const bool isTrue = EqualCimNames(whole, trueText);
    if (!isTrue && !EqualCimNames(whole, falseText)) {
        ThrowMalformed(whole, type);
    }
    return TCIMValue(isTrue);
}

TOptionalText BooleanText(const TCIMValue& value) {
    return std::string(value.GetBoolean() ? trueText : falseText);
}

// Parses one character of the Basic Multilingual Plane. XML delivers valid UTF-8, so a text that starts with
// a multi-byte sequence is one character if and only if that sequence is the whole text.
TCIMValue ParseChar16(TCIMType type, const std::string& text) {
    constexpr std::size_t mostBytes = 3;  // four bytes are a surrogate pair in UTF-16
    const bool isAscii = text.size() == 1 && static_cast<unsigned char>(text.front()) < 0x80;
    const std::size_t length = isAscii ? 1 : MultiByteLength(text);
    if (length == 0 || length != text.size() || length > mostBytes) {
        ThrowMalformed(text, type);
    }
    return TCIMValue(static_cast<char16_t>(DecodeUtf8(text)));
}

TOptionalText Char16Text(const TCIMValue& value) {
    const char16_t unit = value.GetChar16();
    const std::string text = value.ToString(10);
    return IsSurrogate(unit) || !IsXmlText(text) ? std::nullopt : TOptionalText(text);
}

TCIMValue ParseString(TCIMType /*type*/, const std::string& text) {
    return {text};
}

TCIMValue ParseReference(TCIMType /*type*/, const std::string& text) {
    return TCIMValue::Reference(text);
}

TOptionalText StringText(const TCIMValue& value) {
    std::string text = value;
    return IsXmlText(text) ? TOptionalText(std::move(text)) : std::nullopt;
}

TCIMValue ParseDateTime(TCIMType type, const std::string& text) {
    const std::string_view whole = TrimXmlSpace(text);
    const auto dateTime = TCIMDateTime::FromText(whole);
    if (!dateTime) {
        ThrowMalformed(whole, type);
    }
    return TCIMValue(*dateTime);
}

// A TCIMDateTime may have any fields; only valid ones have a text that reads back equal.
TOptionalText DateTimeText(const TCIMValue& value) {
    std::string text = value.ToString(10);
    const auto readBack = TCIMDateTime::FromText(text);
    const TCIMDateTime dateTime = value;
    const auto fields = [](const TCIMDateTime& of) {
        return std::array<std::int64_t, 8>{of.GetYear(),        of.GetMonth(),    of.GetDay(),
                                           of.GetHour(),        of.GetMinute(),   of.GetSecond(),
                                           of.GetMicrosecond(), of.GetUTCOffset()};
    };
    const bool isSame = readBack && *readBack == dateTime && fields(*readBack) == fields(dateTime);
    return isSame ? TOptionalText(std::move(text)) : std::nullopt;
}

// Most significant byte first.
template <std::unsigned_integral T>
std::string ToBytes(T bits) {
    std::string bytes;
    for (std::size_t i = sizeof(T); i-- > 0;) {
        bytes += static_cast<char>(bits >> (8 * i) & 0xFFU);
    }
    return bytes;
}

template <std::unsigned_integral T>
T FromBytes(TCIMType type, const std::string& bytes) {
    if (bytes.size() != sizeof(T)) {
        throw TDocumentCause(std::to_string(bytes.size()) + " bytes are not a valid " + type.ToString());
    }
    T bits = 0;
    for (const char byte : bytes) {
        bits = static_cast<T>(bits << 8U | static_cast<unsigned char>(byte));
    }
    return bits;
}

template <typename T, std::unsigned_integral TBits>
TCIMValue ParseBytes(TCIMType type, const std::string& bytes) {
    return TCIMValue(std::bit_cast<T>(FromBytes<TBits>(type, bytes)));
}

std::string Char16Bytes(const TCIMValue& value) {
    return ToBytes(static_cast<std::uint16_t>(value.GetChar16()));
}

template <std::floating_point T, std::unsigned_integral TBits>
std::string RealBytes(const TCIMValue& value) {
    return ToBytes(std::bit_cast<TBits>(static_cast<T>(value.GetReal())));
}

std::string StringBytes(const TCIMValue& value) {
    return value;
}

TCIMValue RefuseBytes(TCIMType type, const std::string& /*bytes*/) {
    throw TDocumentCause("base64 is not supported for " + type.ToString());
}

std::string ThrowNoBytes(const TCIMValue& value) {
    throw TDocumentCause("the " + value.GetType().ToString() + " \"" + value.ToString(10) +
                         "\" is not valid");
}

// The conversions of one type. Rows in the order of the type codes, which start at 1, so that a code gives
// the index of its row.
struct TTypeRow {
    TCIMType::ECIMType type;
    TCIMValue (*parseText)(TCIMType type, const std::string& text);
    TOptionalText (*text)(const TCIMValue& value);
    TCIMValue (*parseBytes)(TCIMType type, const std::string& bytes);
    std::string (*bytes)(const TCIMValue& value);
};

template <std::integral T>
constexpr TTypeRow IntegerRow(TCIMType::ECIMType type) {
    return {type, ParseInteger<T>, IntegerText, RefuseBytes, ThrowNoBytes};
}

template <std::floating_point T, std::unsigned_integral TBits>
constexpr TTypeRow RealRow(TCIMType::ECIMType type) {
    return {type, ParseReal<T>, RealText<T>, ParseBytes<T, TBits>, RealBytes<T, TBits>};
}

constexpr std::array typeRows{
    TTypeRow{TCIMType::eBoolean, ParseBoolean, BooleanText, RefuseBytes, ThrowNoBytes},
    TTypeRow{TCIMType::eChar16, ParseChar16, Char16Text, ParseBytes<char16_t, std::uint16_t>, Char16Bytes},
    IntegerRow<std::uint8_t>(TCIMType::eUint8),
    IntegerRow<std::int8_t>(TCIMType::eSint8),
    IntegerRow<std::uint16_t>(TCIMType::eUint16),
    IntegerRow<std::int16_t>(TCIMType::eSint16),
    IntegerRow<std::uint32_t>(TCIMType::eUint32),
    IntegerRow<std::int32_t>(TCIMType::eSint32),
    IntegerRow<std::uint64_t>(TCIMType::eUint64),
    IntegerRow<std::int64_t>(TCIMType::eSint64),
    RealRow<float, std::uint32_t>(TCIMType::eReal32),
    RealRow<double, std::uint64_t>(TCIMType::eReal64),
    TTypeRow{TCIMType::eString, ParseString, StringText, ParseString, StringBytes},
    TTypeRow{TCIMType::eDateTime, ParseDateTime, DateTimeText, RefuseBytes, ThrowNoBytes},
    TTypeRow{TCIMType::eReference, ParseReference, StringText, ParseReference, StringBytes},
};

const TTypeRow& RowOf(TCIMType type) {
    return typeRows.at(static_cast<std::size_t>(type) - 1);
}

constexpr bool RowsFollowCodes() {
    for (std::size_t i = 0; i < typeRows.size(); ++i) {
        if (typeRows[i].type != static_cast<int>(i) + 1) {
            return false;
        }
    }
    return true;
}
static_assert(RowsFollowCodes());

}  // namespace

std::optional<TCIMType> FindCimType(std::string_view name) {
    const auto* const row = std::ranges::find(
        typeRows, name, [](const TTypeRow& each) { return TCIMType(each.type).ToString(); });
    return row == typeRows.end() ? std::nullopt : std::optional<TCIMType>(row->type);
}

TCIMValue ParseValueText(TCIMType type, const std::string& text) {
    return RowOf(type).parseText(type, text);
}

std::optional<std::string> ValueText(const TCIMValue& value) {
    return RowOf(value.GetType()).text(value);
}

TCIMValue ParseValueBytes(TCIMType type, const std::string& bytes) {
    return RowOf(type).parseBytes(type, bytes);
}

std::string ValueBytes(const TCIMValue& value) {
    return RowOf(value.GetType()).bytes(value);
}

}  // namespace NVORHOST
