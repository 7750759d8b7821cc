// Dates and times between their storage text and the numbers on the wire, [MS-TDS] 2.2.5.5.1.8-9.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tds {

// The parts of a storage text "YYYY-MM-DD hh:mm:ss.fffffff +hh:mm", each of which may be absent.
struct DateTimeParts {
    std::int64_t days = 0;   // since 0001-01-01
    std::int64_t ticks = 0;  // of 100 ns since midnight
    int offsetMinutes = 0;   // the clock shown, against UTC
};

constexpr std::int64_t kDaysTo1900 = 693'595;  // from 0001-01-01
constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr std::int64_t kTicksPerDay = 1440 * kTicksPerMinute;

// Throws ValueError for a text that is none.
DateTimeParts parseDateTime(std::string_view text);

std::string dateText(std::int64_t days);
std::string timeText(std::int64_t ticks, int scale);

}  // namespace tds
