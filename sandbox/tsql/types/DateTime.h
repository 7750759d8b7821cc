// Civil dates and times: SQL Server's date strings, date parts and date arithmetic.
#pragma once

#include <chrono>
#include <optional>

#include "types/SqlType.h"

namespace tsql {

// Local civil date and time, years 1 to 9999.
struct DateTime {
    static constexpr std::int64_t kTicksPerSecond = 10'000'000;
    static constexpr std::int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
    static constexpr int kDay1900 = 693'595;  // days from 0001-01-01 to 1900-01-01, day 0 of datetime

    std::int64_t days = kDay1900;  // since 0001-01-01
    std::int64_t ticks = 0;        // 100 ns units since midnight

    static constexpr DateTime at(auto total) {
        const auto ofDay = (total % kTicksPerDay + kTicksPerDay) % kTicksPerDay;
        return {static_cast<std::int64_t>((total - ofDay) / kTicksPerDay), static_cast<std::int64_t>(ofDay)};
    }
    constexpr std::int64_t total() const { return days * kTicksPerDay + ticks; }  // ticks since 0001-01-01

    auto operator<=>(const DateTime&) const = default;
};

using CivilDate = std::chrono::year_month_day;
std::int64_t daysFromCivil(const CivilDate& date);  // since 0001-01-01
CivilDate civilFromDays(std::int64_t days);
// Empty if the calendar of the years 1 to 9999 has no such date.
std::optional<std::int64_t> daysFromParts(std::int64_t year, std::int64_t month, std::int64_t day);

// Parses a date string ('2026-11-21', '20261121 13:05', 'Nov 21 2026 1:05PM', '11/21/2026', '13:05'), month
// before day unless the CONVERT style has another order (103, 104, 105, 111 ...). An empty string is
// 1900-01-01. Throws SqlError 241 or 295 for a string that is no date, 242 for values that the calendar or
// the clock does not have; `from` and `to` are the types of the conversion.
constexpr int kNoStyle = -1;  // default style of the type
DateTime parseDateTime(std::string_view text, const SqlType& from, const SqlType& to, int style);

// Conversion from and to the storage form of every date and time type. toStorage() rounds to the precision of
// the type (datetime: 1/300 s, smalldatetime: minutes) and throws SqlError 242 for values outside of the
// type's range, with `from` as the type that they had.
DateTime fromStorage(std::string_view text);
std::string toStorage(const DateTime& value, const SqlType& type, std::string_view from = "datetime2");
bool isInRange(const DateTime& value, const SqlType& type);

// CONVERT(varchar, value, style). Throws SqlError 281 for an unknown style.
std::string formatDateTime(const DateTime& value, const SqlType& type, int style);

// FORMAT(value, pattern) for the culture en-US. Empty for a pattern that is not valid. Throws SqlError 50000.
std::optional<std::string> formatted(const DateTime& value, std::string_view pattern);

enum class DatePart {
    // date parts
    Year,
    Quarter,
    Month,
    DayOfYear,
    Day,
    Week,
    IsoWeek,
    Weekday,
    // clock parts
    Hour,
    Minute,
    Second,
    Millisecond,
    Microsecond,
    Nanosecond
};
// Looks up "yy", "year", "dd" ..., case-insensitive.
std::optional<DatePart> findDatePart(std::string_view name);

std::string_view nameOf(DatePart part);

// Throws SqlError 517 if the result is outside of the type's range.
DateTime dateAdd(DatePart part, std::int64_t number, const DateTime& value, const SqlType& type);
// Number of boundaries of the part between `start` and `end`.
std::int64_t dateDiff(DatePart part, const DateTime& start, const DateTime& end);
std::int64_t datePart(DatePart part, const DateTime& value);
std::string dateName(DatePart part, const DateTime& value);
std::string_view monthName(int month);  // 1: "January"

struct Now {
    DateTime local, utc;
};
Now timeNow();

}  // namespace tsql
