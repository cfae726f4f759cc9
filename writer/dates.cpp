// The one text form that dates have in the documents.
#include "host/os_specific.h"
#include "writer/nox_xml_writer.h"

#include <charconv>
#include <cstddef>
#include <iterator>
#include <limits>

namespace {

constexpr unsigned int minutesPerHour = 60;

/// Appends `value` in decimal, with zeros in front up to `width` digits.
void AppendPadded(std::string& text, std::uint32_t value, std::size_t width) {
    char digits[std::numeric_limits<std::uint32_t>::digits10 + 1];
    const char* const end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    const auto count = static_cast<std::size_t>(end - digits);
    if (count < width) {
        text.append(width - count, '0');
    }
    text.append(digits, count);
}

/// Appends sign and whole hours of a UTC offset in minutes.
void AppendOffset(std::string& text, std::int16_t offsetMinutes) {
    // Readers know the offset as an unsigned number of which only the top 720 values are negative; anything
    // below -720 minutes is a large positive offset to them.
    constexpr std::uint32_t modulus = 0x10000;
    constexpr std::uint32_t firstNegative = modulus - 720;
    const std::uint32_t minutes = static_cast<std::uint16_t>(offsetMinutes);
    const bool isNegative = minutes >= firstNegative;
    text.push_back(isNegative ? '-' : '+');
    AppendPadded(text, (isNegative ? modulus - minutes : minutes) / minutesPerHour, 2);
}

}  // namespace

std::string TNOXXMLWriterImpl::ConvertCIMDateToUSMI(NKELVOR20::TCIMDateTime dateTime) {
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
    // The form has whole hours only: the minutes of the offset are dropped, not rounded.
    text.append(":00");
    return text;
}

std::string TNOXXMLWriterImpl::GetRCFTime() {
    return ConvertCIMDateToUSMI(NKELVOR20::TOSSpecific::GetLocalTime());
}
