#include "types/DateTime.h"

#include <boost/algorithm/string/replace.hpp>
#include <boost/date_time/gregorian/greg_month.hpp>
#include <boost/date_time/gregorian/greg_weekday.hpp>
#include <ctime>

#include "messages/Messages.h"
#include "types/Decimal.h"
#include "types/Text.h"

namespace tsql {
namespace {

using std::chrono::hours, std::chrono::minutes, std::chrono::seconds, std::chrono::weekday, std::chrono::year;

constexpr std::int64_t kSecond = Ticks(seconds(1)).count(), kMinute = 60 * kSecond;

// Marks of CONVERT: the next number is padded with a blank; a fraction has as many digits as the type.
constexpr char kPadded = '\1', kScaled = '\2';
constexpr std::string_view kIsoDate = "yyyy-MM-dd", kIsoTime = "HH:mm:ss.\2";

// Formats a value. The pattern is one of FORMAT without quotes, and may have marks of CONVERT. z: offset.
std::string written(std::string_view pattern, const DateTime& value, int scale = 0) {
    const CivilDate date(value.day());
    const std::chrono::hh_mm_ss clock(value.time());
    const std::int64_t hour = clock.hours().count();
    const auto month = static_cast<unsigned short>(unsigned{date.month()});
    const std::string_view monthText = boost::gregorian::greg_month(month).as_long_string();
    const std::string_view weekdayText =
        boost::gregorian::greg_weekday(weekday(value.day()).c_encoding() & 7).as_long_string();
    const std::pair<char, std::int64_t> numbers[] = {
        {'y', int{date.year()}},       {'M', month},
        {'d', unsigned{date.day()}},   {'H', hour},
        {'h', (hour + 11) % 12 + 1},   {'m', clock.minutes().count()},
        {'s', clock.seconds().count()}};
    std::string text;
    for (std::size_t length = 1; !pattern.empty(); pattern.remove_prefix(length)) {
        const char letter = pattern[0];
        length = std::min(pattern.find_first_not_of(letter), pattern.size());
        const auto* number = std::ranges::find(numbers, letter, [](const auto& each) { return each.first; });
        const int places = letter == 'f' ? static_cast<int>(length) : scale;
        if (letter == kScaled && scale == 0)
            text.pop_back();  // drops the point of an empty fraction
        else if (letter == 'f' || letter == kScaled)
            text += std::to_string(powerOfTen(places) + clock.subseconds().count() / powerOfTen(7 - places))
                        .substr(1);
        else if (letter == 't')
            text.append(hour < 12 ? "AM" : "PM", std::min<std::size_t>(length, 2));
        else if (length > 2 && (letter == 'M' || letter == 'd'))
            text += (letter == 'M' ? monthText : weekdayText).substr(0, length == 3 ? 3 : 9);
        else if (letter == 'z')
            text.append(value.offset.count() < 0 ? "-" : "+") +=
                written("HH:mm", {kDay1900 + std::chrono::abs(value.offset)});
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

Ticks rounded(Ticks time, const SqlType& type) {
    const std::int64_t ticks = time.count();
    // datetime counts 1/300 s: the last digit of its milliseconds is 0, 3 or 7.
    if (type.id == TypeId::DateTime)
        return std::chrono::milliseconds(((ticks * 300 + kSecond / 2) / kSecond * 1000 + 150) / 300);
    // smalldatetime: 29.998 s rounds down, 29.999 s rounds up.
    if (type.id == TypeId::SmallDateTime) return minutes((ticks + 30 * kSecond + kSecond / 1000) / kMinute);
    const std::int64_t unit = powerOfTen(7 - type.scale), last = Ticks(days(1)).count() - unit;
    return Ticks(((type.id == TypeId::Time ? std::min(ticks, last) : ticks) + unit / 2) / unit * unit);
}

// CONVERT's styles as patterns of written().
struct Style {
    std::string_view numbers, date, time = {};
};
constexpr Style kStyles[] = {
    {"0 100", "MMM \1dd yyyy", "\1hh:mmtt"},
    {"1 101", "MM/dd/yyyy"},
    {"2 102", "yyyy.MM.dd"},
    {"3 103", "dd/MM/yyyy"},
    {"4 104", "dd.MM.yyyy"},
    {"5 105", "dd-MM-yyyy"},
    {"6 106", "dd MMM yyyy"},
    {"7 107", "MMM dd, yyyy"},
    {"8 24 108", "", "HH:mm:ss"},
    {"9 109", "MMM \1dd yyyy", "\1hh:mm:ss.\2tt"},
    {"10 110", "MM-dd-yyyy"},
    {"11 111", "yyyy/MM/dd"},
    {"12 112", "yyyyMMdd"},
    {"13 113", "dd MMM yyyy", kIsoTime},
    {"14 114", "", kIsoTime},
    {"20 120", kIsoDate, "HH:mm:ss"},
    {"21 25 121 126 127", kIsoDate, kIsoTime},
    {"22", "MM/dd/yy", "\1hh:mm:ss tt"},
    {"23", kIsoDate},
};

// Standard patterns of FORMAT, behind their letters.
constexpr std::string_view kFormats =
    "dM/d/yyyy; Ddddd, MMMM d, yyyy; fdddd, MMMM d, yyyy h:mm tt; Fdddd, MMMM d, yyyy h:mm:ss tt; "
    "gM/d/yyyy h:mm tt; GM/d/yyyy h:mm:ss tt; mMMMM d; MMMMM d; oyyyy-MM-ddTHH:mm:ss.fffffff; "
    "Oyyyy-MM-ddTHH:mm:ss.fffffff; syyyy-MM-ddTHH:mm:ss; th:mm tt; Th:mm:ss tt; uyyyy-MM-dd HH:mm:ssZ; "
    "yMMMM yyyy; YMMMM yyyy";

// A date has no time to format, a time no date. An hour alone is not padded.
Style styleFor(int number, const SqlType& type, std::string_view target) {
    for (Style style : kStyles) {
        if (!hasWord(style.numbers, std::to_string(number))) continue;
        const bool isBare = number != 22 && style.time.starts_with(kPadded);
        if (type.id == TypeId::Time) style = {{}, {}, style.time.substr(isBare ? 2 : 0)};
        if (type.id == TypeId::Date) style.time = "";
        if (!style.date.empty() || !style.time.empty()) return style;
        if (number % 100 != 14) throw sqlError(kConversionError, {baseName(type.id), target});
    }
    throw sqlError(kInvalidStyle, {std::to_string(number), baseName(type.id)});
}

// Parts of a day that others are computed from; Sundays are counted from the first day, a Monday.
constexpr auto yearOf = [](LocalDay day) -> std::int64_t { return int{CivilDate(day).year()}; };
constexpr auto monthOf = [](LocalDay day) -> std::int64_t { return unsigned{CivilDate(day).month()}; };
constexpr auto dayOfYear = [](LocalDay day) -> std::int64_t {
    return (day - LocalDay(CivilDate(day).year() / 1 / 1)).count() + 1;
};
constexpr auto sundaysUntil = [](LocalDay day) -> std::int64_t {
    return floor<std::chrono::weeks>(day - kFirstDay + days(1)).count();
};

struct PartFacts {
    std::string_view names;                     // the first one is shown
    std::int64_t months = 0;                    // length in months; 0 for other parts
    std::int64_t nanoseconds = 0;               // length of the other parts
    std::int64_t cycle = 0;                     // clock parts: how many make the next larger part
    std::int64_t (*ofDay)(LocalDay) = nullptr;  // date parts: value on a day
};
constexpr std::int64_t kNanosADay = std::chrono::nanoseconds(days(1)).count();
// In the order of DatePart.
constexpr PartFacts kParts[] = {
    {"year yy yyyy", 12, 0, 0, yearOf},
    {"quarter qq q", 3, 0, 0, [](LocalDay day) { return (monthOf(day) + 2) / 3; }},
    {"month mm m", 1, 0, 0, monthOf},
    {"dayofyear dy y", 0, kNanosADay, 0, dayOfYear},
    {"day dd d", 0, kNanosADay, 0, [](LocalDay day) { return std::int64_t{unsigned{CivilDate(day).day()}}; }},
    {"week wk ww", 0, 7 * kNanosADay, 0,
     [](LocalDay day) { return sundaysUntil(day) - sundaysUntil(day - days(dayOfYear(day) - 1)) + 1; }},
    {"iso_week isowk isoww", 0, kNanosADay, 0,  // an ISO week belongs to the year of its Thursday
     [](LocalDay day) {
         return (dayOfYear(day - (weekday(day) - std::chrono::Monday) + days(3)) - 1) / 7 + 1;
     }},
    {"weekday dw w", 0, kNanosADay, 0,
     [](LocalDay day) { return std::int64_t{weekday(day).c_encoding()} + 1; }},
    {"hour hh", 0, kNanosADay / 24, 24},
    {"minute mi n", 0, kMinute * 100, 60},
    {"second ss s", 0, kSecond * 100, 60},
    {"millisecond ms", 0, 1'000'000, 1'000},
    {"microsecond mcs", 0, 1'000, 1'000'000},
    {"nanosecond ns", 0, 1, 1'000'000'000},
    {"tzoffset tz"},
};

constexpr auto factsOf = [](DatePart part) { return kParts[static_cast<std::size_t>(part)]; };
// Since 0001-01-01.
constexpr auto nanosecondsOf = [](LocalTime at) { return Int128{(at - kFirstDay).count()} * 100; };

DateTime addMonths(const DateTime& value, std::int64_t months) {
    constexpr std::int64_t kMostMonths = 120'000;  // more leave the calendar in any case
    CivilDate date =
        CivilDate(value.day()) + std::chrono::months(std::clamp(months, -kMostMonths, kMostMonths));
    if (!date.ok()) date = date.year() / date.month() / std::chrono::last;  // January 31 plus one month
    return {LocalDay(date) + value.time(), value.offset};
}

}  // namespace

std::optional<LocalDay> dayOf(std::int64_t y, std::int64_t m, std::int64_t d) {
    if (y < 1 || y > 9999 || m < 1 || m > 12 || d < 1 || d > 31) return std::nullopt;
    const CivilDate date = year(static_cast<int>(y)) / static_cast<int>(m) / static_cast<int>(d);
    return date.ok() ? std::optional<LocalDay>(date) : std::nullopt;
}

DateTime fromStorage(std::string_view text) {
    const auto number = [&](std::size_t at, std::size_t digits) {  // missing digits are 0
        int value = 0;
        for (std::size_t i = at; i < at + digits; ++i)
            value = value * 10 + (i < text.size() ? text[i] - '0' : 0);
        return value;
    };
    DateTime result;
    if (const std::size_t sign = text.size() - 6; text.size() > 25 && text[sign - 1] == ' ') {
        result.offset =
            minutes((number(sign + 1, 2) * 60 + number(sign + 4, 2)) * (text[sign] == '-' ? -1 : 1));
        text.remove_suffix(7);
    }
    if (text.size() >= 10 && text[4] == '-') {
        result.at = LocalDay(year(number(0, 4)) / number(5, 2) / number(8, 2));
        text.remove_prefix(std::min<std::size_t>(11, text.size()));
    }
    result.at += hours(number(0, 2)) + minutes(number(3, 2)) + seconds(number(6, 2)) + Ticks(number(9, 7));
    return result;
}

bool isInRange(const DateTime& value, const SqlType& type) {
    const bool small = type.id == TypeId::SmallDateTime;
    const year firstYear(small ? 1900 : type.id == TypeId::DateTime ? 1753 : 1);
    const LocalDay first(firstYear / 1 / 1), end(small ? year(2079) / 6 / 7 : year(10000) / 1 / 1);
    return std::min(value.at, value.utc()) >= first && std::max(value.at, value.utc()) < end &&
           std::chrono::abs(value.offset) <= kMostOffset;
}

std::string toStorage(const DateTime& value, const SqlType& type, std::string_view from) {
    if (type.id == TypeId::Date) return written(kIsoDate, value);
    const bool isZoned = type.id == TypeId::DateTimeOffset;
    const DateTime kept{value.day() + rounded(value.time(), type), isZoned ? value.offset : minutes(0)};
    if (type.id == TypeId::Time) return written(kIsoTime, kept, type.scale);
    if (!isInRange(kept, type)) throw sqlError(kDateOutOfRange, {from, baseName(type.id)});
    return written(isZoned ? "yyyy-MM-dd HH:mm:ss.\2 z" : "yyyy-MM-dd HH:mm:ss.\2", kept, type.scale);
}

std::string formatDateTime(const DateTime& value, const SqlType& type, int style, const SqlType& to) {
    const bool classic = isClassicDate(type.id);
    if (style == kNoStyle) style = classic ? 0 : 121;
    // ISO 8601: T between date and time, no fraction if it is zero.
    const bool iso8601 = style == 126 || style == 127;
    const Style pattern = styleFor(style, type, baseName(to.id));
    std::string whole(pattern.date);
    if (!whole.empty() && !pattern.time.empty()) whole += iso8601 ? 'T' : ' ';
    const int scale = iso8601 && value.time().count() % kSecond == 0 ? 0 : classic ? 3 : type.scale;
    // Styles below 100 have a two-digit year, except 0, 9, 13 and those from 20 on.
    if (style > 0 && style < 20 && style != 9 && style != 13) boost::replace_all(whole, "yyyy", "yy");
    std::string time(pattern.time);
    if (classic && style % 100 < 20) std::ranges::replace(time, '.', ':');
    const bool isUtc = style == 127;
    if (type.id == TypeId::DateTimeOffset && !time.empty()) time += isUtc ? "Z" : iso8601 ? "z" : " z";
    return written(whole + time, isUtc ? DateTime{value.utc()} : value, scale);
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
    const auto found = std::ranges::find_if(kParts, [&](auto& each) { return hasWord(each.names, wanted); });
    if (found == std::end(kParts)) return std::nullopt;
    return static_cast<DatePart>(found - std::begin(kParts));
}

std::string_view nameOf(DatePart part) {
    const std::string_view names = factsOf(part).names;
    return names.substr(0, names.find(' '));
}

DateTime dateAdd(DatePart part, std::int64_t number, const DateTime& value, const SqlType& type) {
    constexpr Int128 kMost = Ticks(days(4'000'000)).count();  // leaves the calendar in any case
    const PartFacts facts = factsOf(part);
    const Int128 moved = nanosecondsOf(value.at) + static_cast<Int128>(number) * facts.nanoseconds;
    const Int128 ticks = (moved + (moved < 0 ? -50 : 50)) / 100;
    const Int128 kept =
        type.id == TypeId::Time ? ticks % Ticks(days(1)).count() : std::clamp(ticks, -kMost, kMost);
    const DateTime result = facts.months
                                ? addMonths(value, number * facts.months)
                                : DateTime{kFirstDay + Ticks(static_cast<std::int64_t>(kept)), value.offset};
    if (type.id != TypeId::Time && !isInRange(result, type))
        throw sqlError(kDateAddOverflow, {baseName(type.id)});
    return result;
}

std::int64_t dateDiff(DatePart part, const DateTime& start, const DateTime& end) {
    const PartFacts facts = factsOf(part);
    const auto units = [&](LocalTime at) -> Int128 {
        const LocalDay day = floor<days>(at);
        if (part == DatePart::Week) return sundaysUntil(day);
        if (!facts.months) return nanosecondsOf(at) / facts.nanoseconds;
        return (yearOf(day) * 12 + monthOf(day) - 1) / facts.months;
    };
    const Int128 difference = units(end.utc()) - units(start.utc());
    if (difference > INT64_MAX || difference < INT64_MIN) throw sqlError(kDateDiffOverflow);
    return static_cast<std::int64_t>(difference);
}

std::int64_t datePart(DatePart part, const DateTime& value) {
    const PartFacts facts = factsOf(part);
    if (part == DatePart::TzOffset) return value.offset.count();
    return facts.ofDay ? facts.ofDay(value.day())
                       : value.time().count() * 100 / facts.nanoseconds % facts.cycle;
}

std::string dateName(DatePart part, const DateTime& value) {
    if (part == DatePart::Month) return written("MMMM", value);
    if (part == DatePart::Weekday) return written("dddd", value);
    return part == DatePart::TzOffset ? written("z", value) : std::to_string(datePart(part, value));
}

DateTime timeNow() {
    const auto utc = floor<Ticks>(std::chrono::system_clock::now());
    const std::time_t now = std::chrono::system_clock::to_time_t(utc);
    std::tm civil{};
    localtime_r(&now, &civil);
    const auto offset = floor<minutes>(seconds(civil.tm_gmtoff));
    return {LocalTime(utc.time_since_epoch()) + offset, offset};
}

}  // namespace tsql
