#include "description/Time_Text.h"

#include <array>
#include <cstdio>

namespace Pelgar::ORBE::recorder {

std::string time_text(Start_Time time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                  static_cast<int>(clock.subseconds().count()));
    return text.data();
}

std::optional<Start_Time> time_from_text(const std::string& text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
    if (std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%2d.%3dZ", &year, &month, &day, &hour, &minute,
                    &second, &millisecond) != 7) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (!date.ok()) {
        return std::nullopt;
    }
    const Start_Time time = std::chrono::sys_days(date) + std::chrono::hours(hour) +
                            std::chrono::minutes(minute) + std::chrono::seconds(second) +
                            std::chrono::milliseconds(millisecond);
    // What was read loosely, an hour of 99 or a text that goes on, is told by writing it again.
    return time_text(time) == text ? std::optional(time) : std::nullopt;
}

} // namespace Pelgar::ORBE::recorder
