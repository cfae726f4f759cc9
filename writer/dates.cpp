#include "writer/dates.h"

#include "host/os_specific.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>

namespace {

constexpr unsigned int minutesPerHour = 60;

/// Appends `value` in decimal, padded with leading zeros to `width` digits.
void AppendPadded(std::string& text, std::uint32_t value, std::size_t width) {
    char digits[std::numeric_limits<std::uint32_t>::digits10 + 1];
    const char* const end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    const auto count = static_cast<std::size_t>(end - digits);
    if (count < width) {
        text.append(width - count, '0');
    }
    text.append(digits, count);
}

/// Appends the sign and the whole hours of a UTC offset.
void AppendOffset(std::string& text, std::int16_t offsetMinutes) {
    // The format treats the offset as an unsigned 16-bit number of which only the top 720 values are
    // negative, so an offset below -720 minutes becomes a large positive one.
    constexpr std::uint32_t modulus = 0x10000;
    constexpr std::uint32_t firstNegative = modulus - 720;
    const std::uint32_t minutes = static_cast<std::uint16_t>(offsetMinutes);
    const bool isNegative = minutes >= firstNegative;
    text.push_back(isNegative ? '-' : '+');
    AppendPadded(text, (isNegative ? modulus - minutes : minutes) / minutesPerHour, 2);
}

}  // namespace

std::string FormatDateTime(NKELVOR20::TCIMDateTime dateTime) {
    std::string text;
    AppendPadded(text, dateTime.GetYear(), 4);
    text.push_back('-');
    AppendPadded(text, dateTime.GetMonth(), 2);
    text.push_back('-');
    AppendPadded(text, dateTime.GetDay(), 2);
    text.push_back('T');
    AppendPadded(text, dateTime.GetHour(), 2);
    text.push_back(':');
    AppendPadded(text, dateTime.GetMinute(), 2);
    text.push_back(':');
    AppendPadded(text, dateTime.GetSecond(), 2);
    AppendOffset(text, dateTime.GetUTCOffset());
    // The format has whole hours only: the minutes of the offset are dropped, not rounded.
    text.append(":00");
    return text;
}

std::string GetTimestamp() {
    return FormatDateTime(NKELVOR20::TOSSpecific::GetLocalTime());
}
