#include "machine/collect/frame/cim_time.h"

#include <chrono>

namespace NVORHOST {

NKELVOR20::TCIMDateTime MakeCimTime(std::int64_t secondsSinceEpoch, int offsetMinutes) {
    const std::chrono::sys_seconds local{std::chrono::seconds(secondsSinceEpoch) +
                                         std::chrono::minutes(offsetMinutes)};
    const auto day = std::chrono::floor<std::chrono::days>(local);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(local - day);
    NKELVOR20::TCIMDateTime::TFields fields;
    fields.year = static_cast<std::uint16_t>(static_cast<int>(date.year()));
    fields.month = static_cast<std::uint16_t>(static_cast<unsigned>(date.month()));
    fields.day = static_cast<unsigned>(date.day());
    fields.hour = static_cast<std::uint16_t>(time.hours().count());
    fields.minute = static_cast<std::uint16_t>(time.minutes().count());
    fields.second = static_cast<std::uint16_t>(time.seconds().count());
    fields.utcOffset = static_cast<std::int16_t>(offsetMinutes);
    return NKELVOR20::TCIMDateTime(fields);
}

}  // namespace NVORHOST
