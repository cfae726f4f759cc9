#include "host/cim_date_time.h"

#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <type_traits>

namespace NKELVOR20 {
namespace {

using NVORHOST::IsDigit;
using TFields = TCIMDateTime::TFields;

constexpr std::size_t textLength = 25;
constexpr std::size_t dotAt = 14;   // after "yyyymmddhhmmss" or "ddddddddhhmmss"
constexpr std::size_t signAt = 21;  // '+', '-', or ':' of an interval
constexpr std::size_t utcAt = 22;
constexpr std::size_t utcDigits = 3;
constexpr int westernmostOffset = -12 * 60;  // in minutes; the range of all time zones
constexpr int easternmostOffset = 14 * 60;

using TDigits = std::array<char, TCIMDateTime::allDigits>;

// One field of the digits before the sign: its position, its range, and access to its member.
struct TFieldRow {
    std::size_t begin;
    std::size_t digits;
    std::uint32_t minimum;  // applies only to significant fields
    std::uint32_t maximum;
    std::uint32_t (*get)(const TFields& fields);
    void (*set)(TFields& fields, std::uint32_t value);
};

template <auto member>
constexpr TFieldRow Row(std::size_t begin, std::size_t digits, std::uint32_t minimum, std::uint32_t maximum) {
    return {begin,
            digits,
            minimum,
            maximum,
            [](const TFields& fields) { return std::uint32_t{fields.*member}; },
            [](TFields& fields, std::uint32_t value) {
                auto& field = fields.*member;
                field = static_cast<std::remove_reference_t<decltype(field)>>(value);
            }};
}

constexpr TFieldRow hourRow = Row<&TFields::hour>(8, 2, 0, 23);
constexpr TFieldRow minuteRow = Row<&TFields::minute>(10, 2, 0, 59);
constexpr TFieldRow secondRow = Row<&TFields::second>(12, 2, 0, 60);
constexpr TFieldRow microsecondRow = Row<&TFields::microsecond>(14, 6, 0, 999999);

constexpr TFieldRow timestampRows[] = {
    Row<&TFields::year>(0, 4, 0, 9999),
    Row<&TFields::month>(4, 2, 1, 12),
    Row<&TFields::day>(6, 2, 1, 31),
    hourRow,
    minuteRow,
    secondRow,
    microsecondRow,
};
constexpr TFieldRow intervalRows[] = {
    Row<&TFields::day>(0, 8, 0, 99999999), hourRow, minuteRow, secondRow, microsecondRow,
};

std::span<const TFieldRow> RowsOf(bool isInterval) {
    if (isInterval) {
        return intervalRows;
    }
    return timestampRows;
}

// All of `digits` must be digits.
std::uint32_t ParseDigits(std::string_view digits) {
    std::uint32_t value = 0;
    for (const char digit : digits) {
        value = value * 10 + static_cast<std::uint32_t>(digit - '0');
    }
    return value;
}

// Fills `out` with the lowest digits of `value`.
void WriteNumber(std::uint32_t value, std::span<char> out) {
    for (auto place = out.rbegin(); place != out.rend(); ++place, value /= 10) {
        *place = static_cast<char>('0' + value % 10);
    }
}

// Asterisks replace whole fields, except that they may replace some digits of the microseconds.
bool MayEndAt(std::size_t significant, std::span<const TFieldRow> rows) {
    return significant >= microsecondRow.begin ||
           std::ranges::any_of(rows, [&](const TFieldRow& row) { return row.begin == significant; });
}

// Parses the fields before the sign; returns false if they are malformed or out of range.
bool ParseFields(std::string_view digits, TFields& fields) {
    const std::size_t significant = std::min(digits.find('*'), digits.size());
    const std::string_view kept = digits.substr(0, significant);
    const auto rows = RowsOf(fields.isInterval);
    if (!std::ranges::all_of(kept, IsDigit) || !MayEndAt(significant, rows) ||
        digits.find_first_not_of('*', significant) != std::string_view::npos) {
        return false;
    }
    std::string filled(kept);
    filled.append(digits.size() - significant, '0');
    for (const auto& row : rows) {
        const std::uint32_t value = ParseDigits(std::string_view(filled).substr(row.begin, row.digits));
        if (value > row.maximum || (row.begin < significant && value < row.minimum)) {
            return false;
        }
        row.set(fields, value);
    }
    fields.significantDigits = static_cast<std::uint8_t>(significant);
    return true;
}

bool IsLeapYear(std::uint32_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// Also true for intervals, and if day or month are insignificant.
bool IsDayOfItsMonth(const TFields& fields) {
    constexpr std::uint32_t daysOfMonth[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    constexpr std::uint16_t february = 2;
    if (fields.isInterval || fields.month == 0) {
        return true;
    }
    const bool isLeapDay = fields.month == february && fields.day == 29 && IsLeapYear(fields.year);
    return isLeapDay || fields.day <= daysOfMonth[fields.month - 1];
}

// Parses sign and offset; returns false if they are neither a valid offset nor the ":000" of an interval.
bool ParseZone(std::string_view zone, TFields& fields) {
    const char sign = zone.front();
    const std::string_view offset = zone.substr(1);
    if (!std::ranges::all_of(offset, IsDigit)) {
        return false;
    }
    const auto minutes = static_cast<std::int16_t>(ParseDigits(offset));
    fields.isInterval = sign == ':';
    fields.utcOffset = static_cast<std::int16_t>(sign == '-' ? -minutes : minutes);
    const bool isOffset = fields.utcOffset >= westernmostOffset && fields.utcOffset <= easternmostOffset;
    return ((sign == '+' || sign == '-') && isOffset) || (fields.isInterval && minutes == 0);
}

char SignOf(const TFields& fields) {
    if (fields.isInterval) {
        return ':';
    }
    return fields.utcOffset < 0 ? '-' : '+';
}

}  // namespace

std::optional<TCIMDateTime> TCIMDateTime::FromText(std::string_view text) {
    if (text.size() != textLength || text[dotAt] != '.') {
        return std::nullopt;
    }
    std::string digits(text.substr(0, dotAt));
    digits += text.substr(dotAt + 1, signAt - dotAt - 1);
    TFields fields;
    if (!ParseZone(text.substr(signAt), fields) || !ParseFields(digits, fields) || !IsDayOfItsMonth(fields)) {
        return std::nullopt;
    }
    return TCIMDateTime(fields);
}

TCIMDateTime::~TCIMDateTime() = default;

std::uint16_t TCIMDateTime::GetYear() const {
    return fields_.year;
}
std::uint16_t TCIMDateTime::GetMonth() const {
    return fields_.month;
}
std::uint32_t TCIMDateTime::GetDay() const {
    return fields_.day;
}
std::uint16_t TCIMDateTime::GetHour() const {
    return fields_.hour;
}
std::uint16_t TCIMDateTime::GetMinute() const {
    return fields_.minute;
}
std::uint16_t TCIMDateTime::GetSecond() const {
    return fields_.second;
}
std::uint32_t TCIMDateTime::GetMicrosecond() const {
    return fields_.microsecond;
}
std::int16_t TCIMDateTime::GetUTCOffset() const {
    return fields_.utcOffset;
}
bool TCIMDateTime::IsInterval() const {
    return fields_.isInterval;
}

std::string TCIMDateTime::ToString() const {
    TDigits digits{};
    for (const auto& row : RowsOf(fields_.isInterval)) {
        WriteNumber(row.get(fields_), std::span(digits).subspan(row.begin, row.digits));
    }
    const std::size_t significant = std::min<std::size_t>(fields_.significantDigits, digits.size());
    std::fill(digits.begin() + static_cast<std::ptrdiff_t>(significant), digits.end(), '*');

    std::string text(textLength, '.');
    std::copy_n(digits.begin(), dotAt, text.begin());
    std::copy(digits.begin() + dotAt, digits.end(), text.begin() + dotAt + 1);
    text[signAt] = SignOf(fields_);
    const int minutes = fields_.isInterval ? 0 : fields_.utcOffset;
    WriteNumber(static_cast<std::uint32_t>(minutes < 0 ? -minutes : minutes),
                std::span(text).subspan(utcAt, utcDigits));
    return text;
}

}  // namespace NKELVOR20
