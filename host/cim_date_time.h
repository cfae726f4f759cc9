// The CIM date-time that hosts pass to plug-ins: a point in time with its UTC offset, or an interval.
//
// Binary contract: no virtual operations; 24 bytes. The getters and the destructor are exported by the host's
// core library; copying copies the bytes. Because the destructor is not trivial, a date-time argument is
// passed as the address of the caller's object; no operation of the host has one. A date-time result is
// constructed in memory that the caller provides.
#pragma once

#include "host/export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace NKELVOR20 {

/// A CIM date-time (DSP0004, 5.2.4): proleptic calendar fields as written, never normalised.
/// Shape:    fields equal those of the text, so second 60 is kept; an insignificant field ("*") is 0.
/// Interval: `GetDay` is the whole day count (0 to 99999999); year, month and UTC offset are 0.
class NKELVOR20_API TCIMDateTime {
  public:
    /// The number of digits of "yyyymmddhhmmss.mmmmmm" or "ddddddddhhmmss.mmmmmm".
    static constexpr std::uint8_t allDigits = 20;

    /// The fields in the order of the text form; a plain aggregate so that hosts can fill it by name.
    struct TFields {
        std::uint32_t day = 0;          ///< 1 to 31; the day count of an interval
        std::uint32_t microsecond = 0;  ///< 0 to 999999
        std::uint16_t year = 0;
        std::uint16_t month = 0;
        std::uint16_t hour = 0;
        std::uint16_t minute = 0;
        std::uint16_t second = 0;
        std::int16_t utcOffset = 0;  ///< minutes east of UTC; 0 in an interval
        bool isInterval = false;
        std::uint8_t significantDigits = allDigits;  ///< leading digits that are not "*"
    };

    /// The all-zero point in time, offset 0.
    TCIMDateTime() = default;

    /// Takes the fields unchecked.
    explicit TCIMDateTime(const TFields& fields) : fields_(fields) {}

    TCIMDateTime(const TCIMDateTime&) = default;
    TCIMDateTime& operator=(const TCIMDateTime&) = default;
    ~TCIMDateTime();  // NOLINT(performance-trivially-destructible): the contract lists it as exported

    /// Reads the 25-character form "yyyymmddhhmmss.mmmmmmsutc" or "ddddddddhhmmss.mmmmmm:000".
    /// Absent: nullopt for any other length, a non-digit in place of a digit, a sign other than + - :, a day
    ///         that the calendar does not have (month 0 and day 0 included), an hour above 23, a minute above
    ///         59, a second above 60, an offset outside -720 to +840, or asterisks that do not cover whole
    ///         fields from the least significant on (microseconds digit by digit).
    /// Source: DSP0004 2.8, 5.2.4.
    static std::optional<TCIMDateTime> FromText(std::string_view text);

    /// Returns the 25-character form, which `FromText` maps back to the same value.
    std::string ToString() const;

    std::uint16_t GetYear() const;
    std::uint16_t GetMonth() const;
    std::uint32_t GetDay() const;
    std::uint16_t GetHour() const;
    std::uint16_t GetMinute() const;
    std::uint16_t GetSecond() const;
    std::uint32_t GetMicrosecond() const;
    /// Returns the minutes east of UTC; negative to the west.
    std::int16_t GetUTCOffset() const;
    bool IsInterval() const;

    bool operator==(const TCIMDateTime& other) const { return ToString() == other.ToString(); }

  private:
    TFields fields_;
};

static_assert(sizeof(TCIMDateTime) == 24 && alignof(TCIMDateTime) == 4);
static_assert(std::is_nothrow_copy_constructible_v<TCIMDateTime>);

}  // namespace NKELVOR20
