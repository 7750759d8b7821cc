// Civil calendar and clock: the date texts that SQL Server reads and writes, date parts and their arithmetic.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "types/SqlType.h"

namespace tsql {

// A point in local civil time, years 1 to 9999.
struct DateTime {
    static constexpr std::int64_t kTicksPerSecond = 10'000'000;
    static constexpr std::int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
    static constexpr int kDay1900 = 693'595;  // days from 0001-01-01 to 1900-01-01, day 0 of datetime

    std::int64_t days = kDay1900;  // since 0001-01-01
    std::int64_t ticks = 0;        // of 100 ns since midnight

    auto operator<=>(const DateTime&) const = default;
};

using CivilDate = std::chrono::year_month_day;
std::int64_t daysFromCivil(const CivilDate& date);  // since 0001-01-01
CivilDate civilFromDays(std::int64_t days);
// Nothing when the years 1 to 9999 have no such date.
std::optional<std::int64_t> daysFromParts(std::int64_t year, std::int64_t month, std::int64_t day);

// A text as people write it ('2026-11-21', '20261121 13:05', 'Nov 21 2026 1:05PM', '11/21/2026', '13:05'),
// month before day. Empty: 1900-01-01. A CONVERT style may fix another order of day and month (103, 104, 105,
// 111 ...). Throws SqlError 241 or 295 for what is no date and time, 242 for one that the calendar or the
// clock does not have; the types are those of the conversion.
constexpr int kNoStyle = -1;  // each type has its own default
DateTime parseDateTime(std::string_view text, const SqlType& from, const SqlType& to, int style);

// The storage form of any date or time type, and back. toStorage rounds to what the type keeps (datetime:
// 1/300 s, smalldatetime: minutes) and throws SqlError 242/8115-class errors outside of the type's range.
DateTime fromStorage(std::string_view text);
std::string toStorage(const DateTime& value, const SqlType& type);
bool isInRange(const DateTime& value, const SqlType& type);

inline bool isHijri(int style) {
    return style == 130 || style == 131;
}
constexpr std::string_view kHijri = "the Hijri calendar (styles 130 and 131)";

// CONVERT(varchar, value, style). Throws SqlError 281 for a style that no date has.
std::string formatDateTime(const DateTime& value, const SqlType& type, int style);

enum class DatePart {
    // of the date
    Year,
    Quarter,
    Month,
    DayOfYear,
    Day,
    Week,
    IsoWeek,
    Weekday,
    // of the clock
    Hour,
    Minute,
    Second,
    Millisecond,
    Microsecond,
    Nanosecond
};
// "yy", "year", "dd" ... in any case.
std::optional<DatePart> findDatePart(std::string_view name);

std::string_view nameOf(DatePart part);

// Throws SqlError 517 when the result leaves what the type has.
DateTime dateAdd(DatePart part, std::int64_t number, const DateTime& value, const SqlType& type);
// Boundaries crossed from `start` to `end`.
std::int64_t dateDiff(DatePart part, const DateTime& start, const DateTime& end);
std::int64_t datePart(DatePart part, const DateTime& value);
std::string dateName(DatePart part, const DateTime& value);
std::string_view monthName(int month);  // 1: "January"

struct Now {
    DateTime local, utc;
};
Now timeNow();

}  // namespace tsql
