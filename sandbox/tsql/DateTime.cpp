#include "DateTime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

#include "Int128.h"
#include "SqlError.h"
#include "SqlTypes.h"
#include "Text.h"
#include "Values.h"

namespace tsql {
namespace {

constexpr std::int64_t kSecond = DateTime::kTicksPerSecond;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kLastDay = 3'652'058;  // 9999-12-31

constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                       "Friday", "Saturday", "Sunday"};

void appendPadded(std::string& text, std::int64_t value, std::size_t width, char pad = '0') {
    const std::string digits = std::to_string(value);
    if (digits.size() < width) text.append(width - digits.size(), pad);
    text += digits;
}

// The fraction of the second in `scale` digits; nothing for scale 0.
void appendFraction(std::string& text, std::int64_t ticks, int scale, char separator) {
    if (scale == 0) return;
    text += separator;
    appendPadded(text, ticks % kSecond / powerOfTen(7 - scale), static_cast<std::size_t>(scale));
}

std::string isoDate(std::int64_t days) {
    const CivilDate date = civilFromDays(days);
    std::string text;
    appendPadded(text, date.year, 4);
    appendPadded(text += '-', date.month, 2);
    appendPadded(text += '-', date.day, 2);
    return text;
}

std::string isoTime(std::int64_t ticks, int scale) {
    std::string text;
    appendPadded(text, ticks / kHour, 2);
    appendPadded(text += ':', ticks / kMinute % 60, 2);
    appendPadded(text += ':', ticks / kSecond % 60, 2);
    appendFraction(text, ticks, scale, '.');
    return text;
}

// datetime counts three hundredths: the thousandth is always 0, 3 or 7.
std::int64_t roundedToThreeHundredths(std::int64_t ticks) {
    const std::int64_t units = (ticks * 300 + kSecond / 2) / kSecond;
    return (units * 1000 + 150) / 300 * (kSecond / 1000);
}

std::int64_t roundedTicks(std::int64_t ticks, const SqlType& type) {
    if (type.id == TypeId::DateTime) return roundedToThreeHundredths(ticks);
    // 29.998 s rounds down and 29.999 s up.
    if (type.id == TypeId::SmallDateTime) return (ticks + 30 * kSecond + kSecond / 1000) / kMinute * kMinute;
    const std::int64_t unit = powerOfTen(7 - type.scale);
    return (ticks + unit / 2) / unit * unit;
}

struct DayRange {
    std::int64_t first;
    std::int64_t last;
};

DayRange rangeOf(TypeId id) {
    if (id == TypeId::DateTime) return {daysFromCivil({1753, 1, 1}), kLastDay};
    if (id == TypeId::SmallDateTime) return {DateTime::kDay1900, daysFromCivil({2079, 6, 6})};
    return {0, kLastDay};
}

struct StylePattern {
    int style;  // below 100 the same pattern with a year of two digits, where it is Y
    std::string_view pattern;
};

// Y year, M month, N month's name, d day (D: padded with a blank), H hour of 24, h of 12 (padded with a
// blank), i minute, s second, f thousandths after a colon, F fraction after a point, E the same unless it
// is zero, P AM or PM.
constexpr StylePattern kStyles[] = {
    {100, "N D Y h:iP"},   {101, "M/d/Y"},         {102, "Y.M.d"},        {103, "d/M/Y"},
    {104, "d.M.Y"},        {105, "d-M-Y"},         {106, "d N Y"},        {107, "N d, Y"},
    {108, "H:i:s"},        {109, "N D Y h:i:sfP"}, {110, "M-d-Y"},        {111, "Y/M/d"},
    {112, "YMd"},          {113, "d N Y H:i:sf"},  {114, "H:i:sf"},       {120, "Y-M-d H:i:s"},
    {121, "Y-M-d H:i:sF"}, {126, "Y-M-dTH:i:sE"},  {127, "Y-M-dTH:i:sE"},
};
constexpr std::string_view kTimeLetters = "HhisfFEP";

std::string_view patternOf(int style, const SqlType& type) {
    if (style == 24) style = 108;
    if (style == 25) style = 121;
    if (style == 23) return "Y-M-d";
    if (style == 22) return "M/d/Y h:i:s P";
    for (const StylePattern& entry : kStyles)
        if (entry.style == style || entry.style == style + 100) return entry.pattern;
    throw SqlError(281, std::to_string(style) + " is not a valid style number when converting from " +
                            std::string(baseName(type.id)) + " to a character string.");
}

// date has no time to show, and time no date.
std::string_view patternFor(int style, const SqlType& type) {
    const std::string_view pattern = patternOf(style, type);
    const auto time = pattern.find_first_of(kTimeLetters);
    if (type.id == TypeId::Time) return time == std::string_view::npos ? "H:i:sF" : pattern.substr(time);
    if (type.id != TypeId::Date || time == std::string_view::npos) return pattern;
    if (time == 0) return "Y-M-d";
    return pattern.substr(0, pattern.find_last_of("YMdND", time) + 1);
}

// Styles below 100 show two digits of the year, but for these, which always show four.
bool hasShortYear(int style) {
    return style > 0 && style < 20 && style != 9 && style != 13;
}

void appendField(std::string& text, char field, const DateTime& value, int scale, bool shortYear) {
    const CivilDate date = civilFromDays(value.days);
    const std::int64_t hour = value.ticks / kHour;
    switch (field) {
        case 'Y':
            shortYear ? appendPadded(text, date.year % 100, 2) : appendPadded(text, date.year, 4);
            break;
        case 'M':
            appendPadded(text, date.month, 2);
            break;
        case 'N':
            text += monthName(date.month).substr(0, 3);
            break;
        case 'd':
            appendPadded(text, date.day, 2);
            break;
        case 'D':
            appendPadded(text, date.day, 2, ' ');
            break;
        case 'H':
            appendPadded(text, hour, 2);
            break;
        case 'h':
            appendPadded(text, (hour + 11) % 12 + 1, 2, ' ');
            break;
        case 'i':
            appendPadded(text, value.ticks / kMinute % 60, 2);
            break;
        case 's':
            appendPadded(text, value.ticks / kSecond % 60, 2);
            break;
        case 'f':
            appendFraction(text, value.ticks, scale, ':');
            break;
        case 'F':
            appendFraction(text, value.ticks, scale, '.');
            break;
        case 'E':
            if (value.ticks % kSecond != 0) appendFraction(text, value.ticks, scale, '.');
            break;
        case 'P':
            text += hour < 12 ? "AM" : "PM";
            break;
        default:
            text += field;
    }
}

struct PartNames {
    DatePart part;
    std::string_view names;  // each between blanks
};
constexpr PartNames kPartNames[] = {
    {DatePart::Year, " year yy yyyy "},
    {DatePart::Quarter, " quarter qq q "},
    {DatePart::Month, " month mm m "},
    {DatePart::DayOfYear, " dayofyear dy y "},
    {DatePart::Day, " day dd d "},
    {DatePart::Week, " week wk ww "},
    {DatePart::IsoWeek, " iso_week isowk isoww "},
    {DatePart::Weekday, " weekday dw w "},
    {DatePart::Hour, " hour hh "},
    {DatePart::Minute, " minute mi n "},
    {DatePart::Second, " second ss s "},
    {DatePart::Millisecond, " millisecond ms "},
    {DatePart::Microsecond, " microsecond mcs "},
    {DatePart::Nanosecond, " nanosecond ns "},
};

// Of the parts that have a fixed length; the rest count days.
std::int64_t nanosecondsOf(DatePart part) {
    switch (part) {
        case DatePart::Week:
            return 7 * DateTime::kTicksPerDay * 100;
        case DatePart::Hour:
            return kHour * 100;
        case DatePart::Minute:
            return kMinute * 100;
        case DatePart::Second:
            return kSecond * 100;
        case DatePart::Millisecond:
            return 1'000'000;
        case DatePart::Microsecond:
            return 1'000;
        case DatePart::Nanosecond:
            return 1;
        default:
            return DateTime::kTicksPerDay * 100;
    }
}

int monthsOf(DatePart part) {
    return part == DatePart::Year ? 12 : part == DatePart::Quarter ? 3 : part == DatePart::Month ? 1 : 0;
}

[[noreturn]] void addOverflow() {
    throw SqlError(517, "Adding a value to a 'datetime' column caused an overflow.");
}

DateTime addMonths(const DateTime& value, std::int64_t months) {
    CivilDate date = civilFromDays(value.days);
    const std::int64_t index = date.year * 12LL + date.month - 1 + months;
    if (index < 12 || index >= 12 * 10000) addOverflow();
    date.year = static_cast<int>(index / 12);
    date.month = static_cast<int>(index % 12) + 1;
    while (!isValidDate(date)) --date.day;  // January 31 and one month: the last of February
    return {daysFromCivil(date), value.ticks};
}

std::int64_t dayOfYear(std::int64_t days) {
    return days - daysFromCivil({civilFromDays(days).year, 1, 1}) + 1;
}

// The Thursday of a week tells the year that the ISO week belongs to.
std::int64_t isoWeek(std::int64_t days) {
    return (dayOfYear(days - days % 7 + 3) - 1) / 7 + 1;
}

// Sunday begins a week; 0001-01-01 is a Monday.
std::int64_t sundayWeeks(std::int64_t days) {
    return (days + 1) / 7;
}

DateTime now(bool local) {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto ticks =
        std::chrono::duration_cast<std::chrono::duration<std::int64_t, std::ratio<1, kSecond>>>(sinceEpoch)
            .count();
    const std::time_t seconds = static_cast<std::time_t>(ticks / kSecond);
    std::tm civil{};
    local ? localtime_r(&seconds, &civil) : gmtime_r(&seconds, &civil);
    return {daysFromCivil({civil.tm_year + 1900, civil.tm_mon + 1, civil.tm_mday}),
            civil.tm_hour * kHour + civil.tm_min * kMinute + std::min(civil.tm_sec, 59) * kSecond +
                ticks % kSecond};
}

}  // namespace

// Howard Hinnant's civil calendar: years begin in March, so that the leap day comes last.
std::int64_t daysFromCivil(const CivilDate& date) {
    const std::int64_t year = date.year - (date.month <= 2);
    const std::int64_t shifted = (date.month + 9) % 12;
    const std::int64_t inYear = (153 * shifted + 2) / 5 + date.day - 1;
    return year * 365 + year / 4 - year / 100 + year / 400 + inYear - 306;
}

CivilDate civilFromDays(std::int64_t days) {
    const std::int64_t shifted = days + 306;
    const std::int64_t era = shifted / 146097, inEra = shifted % 146097;
    const std::int64_t yearOfEra = (inEra - inEra / 1460 + inEra / 36524 - inEra / 146096) / 365;
    const std::int64_t inYear = inEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t month = (5 * inYear + 2) / 153;
    const int civilMonth = static_cast<int>(month < 10 ? month + 3 : month - 9);
    return {static_cast<int>(yearOfEra + era * 400) + (civilMonth <= 2), civilMonth,
            static_cast<int>(inYear - (153 * month + 2) / 5 + 1)};
}

bool isValidDate(const CivilDate& date) {
    if (date.year < 1 || date.year > 9999 || date.month < 1 || date.month > 12 || date.day < 1) return false;
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (date.year % 4 == 0 && date.year % 100 != 0) || date.year % 400 == 0;
    return date.day <= kDays[date.month - 1] + (leap && date.month == 2);
}

DateTime fromStorage(std::string_view text) {
    const auto number = [&](std::size_t at, std::size_t digits) {
        int value = 0;
        for (std::size_t i = at; i < at + digits && i < text.size(); ++i)
            value = value * 10 + (text[i] - '0');
        return value;
    };
    DateTime result;
    if (text.size() >= 10 && text[4] == '-') {
        result.days = daysFromCivil({number(0, 4), number(5, 2), number(8, 2)});
        text.remove_prefix(std::min<std::size_t>(11, text.size()));
    }
    if (text.size() < 8) return result;
    result.ticks = number(0, 2) * kHour + number(3, 2) * kMinute + number(6, 2) * kSecond;
    if (text.size() > 9)
        result.ticks +=
            number(9, 7) * powerOfTen(7 - static_cast<int>(std::min<std::size_t>(7, text.size() - 9)));
    return result;
}

std::string toStorage(const DateTime& value, const SqlType& type) {
    if (type.id == TypeId::Date) return isoDate(value.days);
    std::int64_t ticks = roundedTicks(value.ticks, type);
    if (type.id == TypeId::Time) return isoTime(ticks % DateTime::kTicksPerDay, type.scale);
    const std::int64_t days = value.days + ticks / DateTime::kTicksPerDay;
    ticks %= DateTime::kTicksPerDay;
    const DayRange range = rangeOf(type.id);
    if (days < range.first || days > range.last)
        throw SqlError(242,
                       "The conversion to a " + std::string(baseName(type.id)) +
                           " data type resulted in an out-of-range value.",
                       16, 3);
    return isoDate(days) + ' ' + isoTime(ticks, type.scale);
}

std::string formatDateTime(const DateTime& value, const SqlType& type, int style) {
    const bool classic = type.id == TypeId::DateTime || type.id == TypeId::SmallDateTime;
    if (style == kNoStyle) style = classic ? 0 : 121;
    const int scale = classic ? 3 : type.scale;
    std::string text;
    for (const char field : patternFor(style, type))
        appendField(text, field, value, scale, hasShortYear(style));
    return text;
}

std::optional<DatePart> findDatePart(std::string_view name) {
    const std::string wanted = ' ' + lowerAscii(name) + ' ';
    for (const PartNames& entry : kPartNames)
        if (entry.names.find(wanted) != std::string_view::npos) return entry.part;
    return std::nullopt;
}

DateTime dateAdd(DatePart part, std::int64_t number, const DateTime& value) {
    if (const int months = monthsOf(part)) {
        if (std::abs(number) > 120'000) addOverflow();
        return addMonths(value, number * months);
    }
    constexpr Int128 kNanosADay = static_cast<Int128>(DateTime::kTicksPerDay) * 100;
    const Int128 total = static_cast<Int128>(value.days) * kNanosADay + value.ticks * 100 +
                         static_cast<Int128>(number) * nanosecondsOf(part);
    if (total < 0 || total / kNanosADay > kLastDay) addOverflow();
    return {static_cast<std::int64_t>(total / kNanosADay),
            static_cast<std::int64_t>(total % kNanosADay / 100)};
}

std::int64_t dateDiff(DatePart part, const DateTime& start, const DateTime& end) {
    if (const int months = monthsOf(part)) {
        const auto index = [&](const DateTime& value) {
            const CivilDate date = civilFromDays(value.days);
            return (date.year * 12 + date.month - 1) / months;
        };
        return index(end) - index(start);
    }
    if (part == DatePart::Week || part == DatePart::IsoWeek)
        return sundayWeeks(end.days) - sundayWeeks(start.days);
    const Int128 unit = nanosecondsOf(part);
    const auto units = [&](const DateTime& value) {
        return (static_cast<Int128>(value.days) * DateTime::kTicksPerDay + value.ticks) * 100 / unit;
    };
    const Int128 difference = units(end) - units(start);
    if (difference > INT64_MAX || difference < INT64_MIN)
        throw SqlError(
            535,
            "The datediff function resulted in an overflow. The number of dateparts separating two "
            "date/time instances is too large. Try to use datediff with a less precise datepart.");
    return static_cast<std::int64_t>(difference);
}

std::int64_t datePart(DatePart part, const DateTime& value) {
    const CivilDate date = civilFromDays(value.days);
    switch (part) {
        case DatePart::Year:
            return date.year;
        case DatePart::Quarter:
            return (date.month + 2) / 3;
        case DatePart::Month:
            return date.month;
        case DatePart::DayOfYear:
            return dayOfYear(value.days);
        case DatePart::Day:
            return date.day;
        case DatePart::Week:
            return sundayWeeks(value.days) - sundayWeeks(daysFromCivil({date.year, 1, 1})) + 1;
        case DatePart::IsoWeek:
            return isoWeek(value.days);
        case DatePart::Weekday:
            return (value.days + 1) % 7 + 1;
        case DatePart::Hour:
            return value.ticks / kHour;
        case DatePart::Minute:
            return value.ticks / kMinute % 60;
        case DatePart::Second:
            return value.ticks / kSecond % 60;
        case DatePart::Millisecond:
            return value.ticks % kSecond / 10'000;
        case DatePart::Microsecond:
            return value.ticks % kSecond / 10;
        case DatePart::Nanosecond:
            return value.ticks % kSecond * 100;
    }
    return 0;
}

std::string dateName(DatePart part, const DateTime& value) {
    if (part == DatePart::Month) return std::string(monthName(civilFromDays(value.days).month));
    if (part == DatePart::Weekday) return std::string(kWeekdays[static_cast<std::size_t>(value.days % 7)]);
    return std::to_string(datePart(part, value));
}

std::string_view monthName(int month) {
    return kMonths[static_cast<std::size_t>(month - 1)];
}

DateTime localNow() {
    return now(true);
}
DateTime utcNow() {
    return now(false);
}

}  // namespace tsql
