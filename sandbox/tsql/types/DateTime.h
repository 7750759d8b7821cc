// Civil dates and times: SQL Server's date strings, date parts and date arithmetic.
#pragma once

#include <chrono>
#include <optional>

#include "types/SqlType.h"

namespace tsql {

using std::chrono::days, std::chrono::floor;
using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;  // units of 100 ns
using CivilDate = std::chrono::year_month_day;
using LocalDay = std::chrono::local_days;
using LocalTime = std::chrono::local_time<Ticks>;
inline constexpr LocalDay kFirstDay{std::chrono::year(1) / 1 / 1};
inline constexpr std::chrono::minutes kMostOffset{14 * 60};           // of a datetimeoffset
inline constexpr LocalDay kDay1900{std::chrono::year(1900) / 1 / 1};  // day 0 of datetime

// Local civil date and time, years 1 to 9999. A time without a date is on 1900-01-01.
struct DateTime {
    LocalTime at = kDay1900;
    std::chrono::minutes offset{};  // from UTC, of a datetimeoffset

    LocalTime utc() const { return at - offset; }
    LocalDay day() const { return floor<days>(at); }
    Ticks time() const { return at - day(); }
};

// Empty if the calendar of the years 1 to 9999 has no such date.
std::optional<LocalDay> dayOf(std::int64_t year, std::int64_t month, std::int64_t day);

// Parses a date string ('2026-11-21', '20261121 13:05', 'Nov 21 2026 1:05PM', '11/21/2026', '13:05 +02:00'),
// month before day unless the CONVERT style has another order (103, 104, 105, 111 ...). An empty string is
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

// CONVERT(to, value, style). Throws SqlError 281 for an unknown style, 8114 for one that the type lacks.
std::string formatDateTime(const DateTime& value, const SqlType& type, int style, const SqlType& to);

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
    Nanosecond,
    TzOffset  // in minutes
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

DateTime timeNow();

}  // namespace tsql
