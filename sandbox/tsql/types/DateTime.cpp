#include "types/DateTime.h"

#include <boost/algorithm/string/replace.hpp>
#include <charconv>
#include <ctime>

#include "messages/Messages.h"
#include "types/Decimal.h"
#include "types/Text.h"

namespace tsql {
namespace {

using std::chrono::days, std::chrono::sys_days, std::chrono::year;

constexpr std::int64_t kSecond = DateTime::kTicksPerSecond;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr sys_days kFirstDay{year(1) / 1 / 1};
constexpr std::int64_t kLastDay = (sys_days(year(9999) / 12 / 31) - kFirstDay).count();
constexpr std::int64_t kDay1970 = (sys_days() - kFirstDay).count();

constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
constexpr std::string_view kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                          "Thursday", "Friday", "Saturday"};

// Marks of CONVERT: the next number is padded with a blank; a fraction has as many digits as the type.
constexpr char kPadded = '\1', kScaled = '\2';
constexpr std::string_view kIsoDate = "yyyy-MM-dd", kIsoTime = "HH:mm:ss.\2";

// Formats a value. The pattern is one of FORMAT without quotes, and may have marks of CONVERT.
std::string written(std::string_view pattern, const DateTime& value, int scale = 0) {
    const CivilDate date = civilFromDays(value.days);
    const std::int64_t hour = value.ticks / kHour, month = unsigned{date.month()};
    const std::pair<char, std::int64_t> numbers[] = {
        {'y', int{date.year()}},          {'M', month},
        {'d', unsigned{date.day()}},      {'H', hour},
        {'h', (hour + 11) % 12 + 1},      {'m', value.ticks / kMinute % 60},
        {'s', value.ticks / kSecond % 60}};
    std::string text;
    for (std::size_t length = 1; !pattern.empty(); pattern.remove_prefix(length)) {
        const char letter = pattern[0];
        length = std::min(pattern.find_first_not_of(letter), pattern.size());
        const auto* number = std::ranges::find(numbers, letter, [](const auto& each) { return each.first; });
        const int places = letter == 'f' ? static_cast<int>(length) : scale;
        if (letter == kScaled && scale == 0)
            text.pop_back();  // drops the point of an empty fraction
        else if (letter == 'f' || letter == kScaled)
            text +=
                std::to_string(powerOfTen(places) + value.ticks % kSecond / powerOfTen(7 - places)).substr(1);
        else if (letter == 't')
            text.append(hour < 12 ? "AM" : "PM", std::min<std::size_t>(length, 2));
        else if (length > 2 && (letter == 'M' || letter == 'd'))
            text += (letter == 'M' ? kMonths[month - 1] : kWeekdays[(value.days + 1) % 7])
                        .substr(0, length == 3 ? 3 : 9);
        else if (number == std::end(numbers))
            text.append(pattern.substr(0, length));
        else {
            const std::string digits =
                std::to_string(letter == 'y' && length < 3 ? number->second % 100 : number->second);
            const bool isPadded = text.ends_with(kPadded);
            if (isPadded) text.pop_back();
            const std::size_t width = letter == 'y' ? length : std::min<std::size_t>(length, 2);
            text.append(std::max(width, digits.size()) - digits.size(), isPadded ? ' ' : '0') += digits;
        }
    }
    return text;
}

std::int64_t roundedTicks(std::int64_t ticks, const SqlType& type) {
    // datetime counts 1/300 s: the last digit of its milliseconds is 0, 3 or 7.
    if (type.id == TypeId::DateTime)
        return ((ticks * 300 + kSecond / 2) / kSecond * 1000 + 150) / 300 * (kSecond / 1000);
    // smalldatetime: 29.998 s rounds down, 29.999 s rounds up.
    if (type.id == TypeId::SmallDateTime) return (ticks + 30 * kSecond + kSecond / 1000) / kMinute * kMinute;
    const std::int64_t unit = powerOfTen(7 - type.scale);
    return (ticks + unit / 2) / unit * unit;
}

// CONVERT's styles as patterns of written(). 100 to 114 are the same as 0 to 14, 120 and 121 as 20 and 21.
struct Style {
    int number;
    std::string_view date, time = {};
};
constexpr Style kStyles[] = {
    {22, "MM/dd/yy", "\1hh:mm:ss tt"},
    {23, kIsoDate},
    {24, "", "HH:mm:ss"},
    {100, "MMM \1dd yyyy", "\1hh:mmtt"},
    {101, "MM/dd/yyyy"},
    {102, "yyyy.MM.dd"},
    {103, "dd/MM/yyyy"},
    {104, "dd.MM.yyyy"},
    {105, "dd-MM-yyyy"},
    {106, "dd MMM yyyy"},
    {107, "MMM dd, yyyy"},
    {108, "", "HH:mm:ss"},
    {109, "MMM \1dd yyyy", "\1hh:mm:ss.\2tt"},
    {110, "MM-dd-yyyy"},
    {111, "yyyy/MM/dd"},
    {112, "yyyyMMdd"},
    {113, "dd MMM yyyy", kIsoTime},
    {114, "", kIsoTime},
    {120, kIsoDate, "HH:mm:ss"},
    {121, kIsoDate, kIsoTime},
};

// Standard patterns of FORMAT, behind their letters.
constexpr std::string_view kFormats =
    "dM/d/yyyy; Ddddd, MMMM d, yyyy; fdddd, MMMM d, yyyy h:mm tt; Fdddd, MMMM d, yyyy h:mm:ss tt; "
    "gM/d/yyyy h:mm tt; GM/d/yyyy h:mm:ss tt; mMMMM d; MMMMM d; oyyyy-MM-ddTHH:mm:ss.fffffff; "
    "Oyyyy-MM-ddTHH:mm:ss.fffffff; syyyy-MM-ddTHH:mm:ss; th:mm tt; Th:mm:ss tt; uyyyy-MM-dd HH:mm:ssZ; "
    "yMMMM yyyy; YMMMM yyyy";

// A date has no time to format, a time no date.
Style styleFor(int number, const SqlType& type) {
    if (number == 25 || number == 126 || number == 127) number = 121;
    for (Style style : kStyles) {
        if (style.number != number && style.number != number + 100) continue;
        if (type.id == TypeId::Time) style.date = "";
        if (type.id == TypeId::Date) style.time = "";
        if (!style.date.empty() || !style.time.empty()) return style;
        throw sqlError(kStyleNotSupported, {std::to_string(number), baseName(type.id), "varchar"});
    }
    throw sqlError(kInvalidStyle, {std::to_string(number), baseName(type.id)});
}

std::int64_t dayOfYear(std::int64_t day) {
    return day - daysFromCivil(civilFromDays(day).year() / 1 / 1) + 1;
}

// Number of Sundays up to `day`: weeks begin on Sunday, and 0001-01-01 is a Monday.
std::int64_t sundayWeeks(std::int64_t day) {
    return (day + 1) / 7;
}

std::int64_t monthOf(std::int64_t day) {
    return unsigned{civilFromDays(day).month()};
}

struct PartFacts {
    std::string_view names;                             // the first one is shown
    std::int64_t months = 0;                            // length in months; 0 for other parts
    std::int64_t nanoseconds = 0;                       // length of the other parts
    std::int64_t cycle = 0;                             // clock parts: how many make the next larger part
    std::int64_t (*ofDay)(std::int64_t day) = nullptr;  // date parts: value on a day
};
constexpr std::int64_t kNanosADay = DateTime::kTicksPerDay * 100;
// In the order of DatePart.
constexpr PartFacts kParts[] = {
    {"year yy yyyy", 12, 0, 0, [](auto day) { return std::int64_t{int{civilFromDays(day).year()}}; }},
    {"quarter qq q", 3, 0, 0, [](auto day) { return (monthOf(day) + 2) / 3; }},
    {"month mm m", 1, 0, 0, monthOf},
    {"dayofyear dy y", 0, kNanosADay, 0, dayOfYear},
    {"day dd d", 0, kNanosADay, 0, [](auto day) { return std::int64_t{unsigned{civilFromDays(day).day()}}; }},
    {"week wk ww", 0, 7 * kNanosADay, 0,
     [](auto day) { return sundayWeeks(day) - sundayWeeks(day - dayOfYear(day) + 1) + 1; }},
    {"iso_week isowk isoww", 0, kNanosADay, 0,  // an ISO week belongs to the year of its Thursday
     [](auto day) { return (dayOfYear(day - day % 7 + 3) - 1) / 7 + 1; }},
    {"weekday dw w", 0, kNanosADay, 0, [](auto day) { return (day + 1) % 7 + 1; }},
    {"hour hh", 0, kHour * 100, 24},
    {"minute mi n", 0, kMinute * 100, 60},
    {"second ss s", 0, kSecond * 100, 60},
    {"millisecond ms", 0, 1'000'000, 1'000},
    {"microsecond mcs", 0, 1'000, 1'000'000},
    {"nanosecond ns", 0, 1, 1'000'000'000},
};

const PartFacts& factsOf(DatePart part) {
    return kParts[static_cast<std::size_t>(part)];
}

// Nanoseconds since 0001-01-01.
Int128 nanosecondsOf(const DateTime& value) {
    return static_cast<Int128>(value.total()) * 100;
}

DateTime addMonths(const DateTime& value, std::int64_t months) {
    constexpr std::int64_t kMostMonths = 120'000;  // more leave the calendar in any case
    CivilDate date =
        civilFromDays(value.days) + std::chrono::months(std::clamp(months, -kMostMonths, kMostMonths));
    if (!date.ok()) date = date.year() / date.month() / std::chrono::last;  // January 31 plus one month
    return {daysFromCivil(date), value.ticks};
}

}  // namespace

std::int64_t daysFromCivil(const CivilDate& date) {
    return (sys_days(date) - kFirstDay).count();
}

CivilDate civilFromDays(std::int64_t number) {
    return kFirstDay + days(number);
}

std::optional<std::int64_t> daysFromParts(std::int64_t y, std::int64_t m, std::int64_t d) {
    if (y < 1 || y > 9999 || m < 1 || m > 12 || d < 1 || d > 31) return std::nullopt;
    const CivilDate date = year(static_cast<int>(y)) / static_cast<int>(m) / static_cast<int>(d);
    return date.ok() ? std::optional(daysFromCivil(date)) : std::nullopt;
}

DateTime fromStorage(std::string_view text) {
    char whole[] = "1900-01-01 00:00:00.0000000";  // what the form of the type lacks
    const std::size_t begin = text.size() >= 10 && text[4] == '-' ? 0 : 11;
    text.copy(whole + begin, sizeof whole - 1 - begin);
    const auto number = [&whole](std::size_t at, std::size_t digits) {
        int value = 0;
        std::from_chars(whole + at, whole + at + digits, value);
        return value;
    };
    return {daysFromCivil(year(number(0, 4)) / number(5, 2) / number(8, 2)),
            number(11, 2) * kHour + number(14, 2) * kMinute + number(17, 2) * kSecond + number(20, 7)};
}

bool isInRange(const DateTime& value, const SqlType& type) {
    const bool small = type.id == TypeId::SmallDateTime;
    const std::int64_t first = small                         ? DateTime::kDay1900
                               : type.id == TypeId::DateTime ? daysFromCivil(year(1753) / 1 / 1)
                                                             : 0;
    return value.days >= first && value.days <= (small ? daysFromCivil(year(2079) / 6 / 6) : kLastDay);
}

std::string toStorage(const DateTime& value, const SqlType& type, std::string_view from) {
    if (type.id == TypeId::Date) return written(kIsoDate, value);
    const std::int64_t ticks = roundedTicks(value.ticks, type);
    const DateTime rounded{value.days + ticks / DateTime::kTicksPerDay, ticks % DateTime::kTicksPerDay};
    if (type.id == TypeId::Time) return written(kIsoTime, rounded, type.scale);
    if (!isInRange(rounded, type)) throw sqlError(kDateOutOfRange, {from, baseName(type.id)});
    return written("yyyy-MM-dd HH:mm:ss.\2", rounded, type.scale);
}

std::string formatDateTime(const DateTime& value, const SqlType& type, int style) {
    const bool classic = isClassicDate(type.id);
    if (style == kNoStyle) style = classic ? 0 : 121;
    // ISO 8601: T between date and time, no fraction if it is zero.
    const bool iso8601 = style % 100 == 26 || style % 100 == 27;
    const Style pattern = styleFor(style, type);
    std::string whole(pattern.date);
    if (!whole.empty() && !pattern.time.empty()) whole += iso8601 ? 'T' : ' ';
    const int scale = iso8601 && value.ticks % kSecond == 0 ? 0 : classic ? 3 : type.scale;
    // Styles below 100 have a two-digit year, except 0, 9, 13 and those from 20 on.
    if (style > 0 && style < 20 && style != 9 && style != 13) boost::replace_all(whole, "yyyy", "yy");
    std::string time(pattern.time);
    if (classic && style % 100 < 20) std::ranges::replace(time, '.', ':');
    return written(whole + time, value, scale);
}

std::optional<std::string> formatted(const DateTime& value, std::string_view pattern) {
    for (const std::string& standard : listItems(kFormats))
        if (pattern.empty() ? standard[0] == 'G' : pattern == standard.substr(0, 1))
            return written(standard.substr(1), value);
    if (pattern.find_first_of("FgKzRrU'\"\\%\1\2") != pattern.npos)
        throw unsupported("the pattern '" + std::string(pattern) + "' of FORMAT");
    const bool isValid = pattern.size() > 1 && pattern.find("ffffffff") == pattern.npos;
    return isValid ? std::optional(written(pattern, value)) : std::nullopt;
}

std::optional<DatePart> findDatePart(std::string_view name) {
    const std::string wanted = lowerAscii(name);
    const auto found =
        std::ranges::find_if(kParts, [&](auto& facts) { return hasWord(facts.names, wanted); });
    if (found == std::end(kParts)) return std::nullopt;
    return static_cast<DatePart>(found - std::begin(kParts));
}

std::string_view nameOf(DatePart part) {
    const std::string_view names = factsOf(part).names;
    return names.substr(0, names.find(' '));
}

DateTime dateAdd(DatePart part, std::int64_t number, const DateTime& value, const SqlType& type) {
    const PartFacts& facts = factsOf(part);
    const Int128 moved = nanosecondsOf(value) + static_cast<Int128>(number) * facts.nanoseconds;
    const DateTime result = facts.months ? addMonths(value, number * facts.months)
                                         : DateTime::at((moved + (moved < 0 ? -50 : 50)) / 100);
    if (type.id != TypeId::Time && !isInRange(result, type))
        throw sqlError(kDateAddOverflow, {baseName(type.id)});
    return result;
}

std::int64_t dateDiff(DatePart part, const DateTime& start, const DateTime& end) {
    const PartFacts& facts = factsOf(part);
    if (part == DatePart::Week) return sundayWeeks(end.days) - sundayWeeks(start.days);
    const auto units = [&](const DateTime& value) -> Int128 {
        if (!facts.months) return nanosecondsOf(value) / facts.nanoseconds;
        return (datePart(DatePart::Year, value) * 12 + monthOf(value.days) - 1) / facts.months;
    };
    const Int128 difference = units(end) - units(start);
    if (difference > INT64_MAX || difference < INT64_MIN) throw sqlError(kDateDiffOverflow);
    return static_cast<std::int64_t>(difference);
}

std::int64_t datePart(DatePart part, const DateTime& value) {
    const PartFacts& facts = factsOf(part);
    return facts.ofDay ? facts.ofDay(value.days) : value.ticks * 100 / facts.nanoseconds % facts.cycle;
}

std::string dateName(DatePart part, const DateTime& value) {
    const std::int64_t number = datePart(part, value);
    if (part == DatePart::Month) return std::string(monthName(static_cast<int>(number)));
    if (part == DatePart::Weekday) return std::string(kWeekdays[number - 1]);
    return std::to_string(number);
}

std::string_view monthName(int month) {
    return kMonths[month - 1];
}

Now timeNow() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kSecond>>;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t ticks = std::chrono::duration_cast<Ticks>(now).count();
    const std::time_t seconds = ticks / kSecond;
    std::tm civil{};
    localtime_r(&seconds, &civil);
    const DateTime utc = DateTime::at(kDay1970 * DateTime::kTicksPerDay + ticks);
    return {DateTime::at(utc.total() + civil.tm_gmtoff * kSecond), utc};
}

}  // namespace tsql
