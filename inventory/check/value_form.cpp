#include "inventory/check/value_form.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>

namespace NINVENTORY {
namespace {

template <typename TInteger>
bool IsInteger(std::string_view text) {
    TInteger number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool IsBoolean(std::string_view text) {
    return text == "true" || text == "false";
}

bool IsFloat(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

// A pattern has "0" for a digit and "+" for either sign.
bool Matches(std::string_view text, std::string_view pattern) {
    return text.size() == pattern.size() && std::ranges::equal(text, pattern, [](char c, char expected) {
               return expected == '0'   ? c >= '0' && c <= '9'
                      : expected == '+' ? c == '+' || c == '-'
                                        : c == expected;
           });
}

int GetNumber(std::string_view text, std::size_t at, std::size_t length) {
    int number = 0;
    (void)std::from_chars(text.data() + at, text.data() + at + length, number);
    return number;
}

bool IsDateTime(std::string_view text) {
    constexpr int maxHour = 23;
    constexpr int maxMinute = 59;
    constexpr int maxSecond = 60;  // a leap second
    if (!Matches(text, "0000-00-00T00:00:00+00:00")) {
        return false;
    }
    const int month = GetNumber(text, 5, 2);
    const int day = GetNumber(text, 8, 2);
    return month >= 1 && month <= 12 && day >= 1 && day <= 31 && GetNumber(text, 11, 2) <= maxHour &&
           GetNumber(text, 14, 2) <= maxMinute && GetNumber(text, 17, 2) <= maxSecond;
}

bool IsAny(std::string_view /*text*/) {
    return true;
}

struct TTypeForm {
    std::string_view type;
    bool (*hasForm)(std::string_view text);
};

constexpr TTypeForm forms[] = {
    {"string", IsAny},
    {"boolean", IsBoolean},
    {"dateTime", IsDateTime},
    {"float", IsFloat},
    {"unsignedByte", IsInteger<std::uint8_t>},
    {"unsignedShort", IsInteger<std::uint16_t>},
    {"unsignedInt", IsInteger<std::uint32_t>},
    {"unsignedLong", IsInteger<std::uint64_t>},
    {"short", IsInteger<std::int16_t>},
    {"int", IsInteger<std::int32_t>},
    {"long", IsInteger<std::int64_t>},
};

const TTypeForm* FindForm(std::string_view type) {
    const auto* const row = std::ranges::find(forms, type, &TTypeForm::type);
    return row == std::end(forms) ? nullptr : row;
}

}  // namespace

bool IsKnownType(std::string_view type) {
    return FindForm(type) != nullptr;
}

bool HasForm(std::string_view type, std::string_view text) {
    const TTypeForm* const form = FindForm(type);
    return form == nullptr || form->hasForm(text);
}

}  // namespace NINVENTORY
