#include "DateTime.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <sstream>

#include "Messages.h"
#include "SqlTypes.h"
#include "Text.h"
#include "Values.h"

namespace tsql {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;

constexpr std::int64_t kSecond = DateTime::kTicksPerSecond;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr sys_days kFirstDay{year(1) / 1 / 1};
constexpr std::int64_t kLastDay = (sys_days(year(9999) / 12 / 31) - kFirstDay).count();
constexpr std::int64_t kDay1970 = (sys_days() - kFirstDay).count();

constexpr std::string_view kIsoDate = "%Y-%m-%d";
constexpr std::string_view kIsoTime = "%H:%M:%S.f";

// A pattern of std::put_time(), in which f after a sign is the fraction of the second, in `scale` digits.
std::string written(std::string pattern, const DateTime& value, int scale = 0, bool shortYear = false) {
    const std::string fraction =
        std::to_string(kSecond + value.ticks % kSecond).substr(1, static_cast<std::size_t>(scale));
    if (const auto mark = pattern.find('f'); mark != std::string::npos)
        scale == 0 ? pattern.erase(mark - 1, 2) : pattern.replace(mark, 1, fraction);
    const CivilDate date = civilFromDays(value.days);
    if (const auto mark = pattern.find("%Y"); mark != std::string::npos)
        pattern.replace(mark, 2, std::to_string(10'000 + static_cast<int>(date.year())), shortYear ? 3 : 1);
    std::tm civil{};
    civil.tm_year = static_cast<int>(date.year()) - 1900;
    civil.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    civil.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    civil.tm_wday = static_cast<int>((value.days + 1) % 7);
    civil.tm_hour = static_cast<int>(value.ticks / kHour);
    civil.tm_min = static_cast<int>(value.ticks / kMinute % 60);
    civil.tm_sec = static_cast<int>(value.ticks / kSecond % 60);
    std::ostringstream text;
    text << std::put_time(&civil, pattern.c_str());
    return text.str();
}

std::int64_t roundedTicks(std::int64_t ticks, const SqlType& type) {
    // datetime counts three hundredths: the thousandth is always 0, 3 or 7.
    if (type.id == TypeId::DateTime)
        return ((ticks * 300 + kSecond / 2) / kSecond * 1000 + 150) / 300 * (kSecond / 1000);
    // 29.998 s rounds down and 29.999 s up.
    if (type.id == TypeId::SmallDateTime) return (ticks + 30 * kSecond + kSecond / 1000) / kMinute * kMinute;
    const std::int64_t unit = powerOfTen(7 - type.scale);
    return (ticks + unit / 2) / unit * unit;
}

// The first and the last day that a type has.
std::pair<std::int64_t, std::int64_t> rangeOf(TypeId id) {
    if (id == TypeId::DateTime) return {daysFromCivil(year(1753) / 1 / 1), kLastDay};
    if (id == TypeId::SmallDateTime) return {DateTime::kDay1900, daysFromCivil(year(2079) / 6 / 6)};
    return {0, kLastDay};
}

// The styles of CONVERT, as patterns of written(); 100 to 114 stand for 0 to 14, too, 120 and 121 for 20
// and 21.
struct Style {
    int number;
    std::string_view date, time = {};
};
constexpr Style kStyles[] = {
    {23, kIsoDate},
    {24, "", "%H:%M:%S"},
    {25, kIsoDate, kIsoTime},
    {100, "%b %e %Y", "%l:%M%p"},
    {101, "%m/%d/%Y"},
    {102, "%Y.%m.%d"},
    {103, "%d/%m/%Y"},
    {104, "%d.%m.%Y"},
    {105, "%d-%m-%Y"},
    {106, "%d %b %Y"},
    {107, "%b %d, %Y"},
    {108, "", "%H:%M:%S"},
    {109, "%b %e %Y", "%l:%M:%S:f%p"},
    {110, "%m-%d-%Y"},
    {111, "%Y/%m/%d"},
    {112, "%Y%m%d"},
    {113, "%d %b %Y", "%H:%M:%S:f"},
    {114, "", "%H:%M:%S:f"},
    {120, kIsoDate, "%H:%M:%S"},
    {121, kIsoDate, kIsoTime},
    {126, kIsoDate, kIsoTime},
    {127, kIsoDate, kIsoTime},
};

// date has no time to show, and time no date.
Style styleFor(int number, const SqlType& type) {
    for (Style style : kStyles) {
        if (style.number != number && style.number != number + 100) continue;
        if (type.id == TypeId::Time) return {number, "", style.time.empty() ? kIsoTime : style.time};
        if (type.id == TypeId::Date) return {number, style.date.empty() ? kIsoDate : style.date};
        return style;
    }
    throw sqlError(281, {std::to_string(number), baseName(type.id)});
}

struct PartFacts {
    std::string_view names;        // each between blanks
    std::int64_t months = 0;       // of the parts that months make up
    std::int64_t nanoseconds = 0;  // of the others
    std::int64_t cycle = 0;        // of the clock's parts: how many there are in the next larger one
};
constexpr std::int64_t kNanosADay = DateTime::kTicksPerDay * 100;
// In the order of DatePart.
constexpr PartFacts kParts[] = {
    {" year yy yyyy ", 12},
    {" quarter qq q ", 3},
    {" month mm m ", 1},
    {" dayofyear dy y ", 0, kNanosADay},
    {" day dd d ", 0, kNanosADay},
    {" week wk ww ", 0, 7 * kNanosADay},
    {" iso_week isowk isoww ", 0, kNanosADay},
    {" weekday dw w ", 0, kNanosADay},
    {" hour hh ", 0, kHour * 100, 24},
    {" minute mi n ", 0, kMinute * 100, 60},
    {" second ss s ", 0, kSecond * 100, 60},
    {" millisecond ms ", 0, 1'000'000, 1'000},
    {" microsecond mcs ", 0, 1'000, 1'000'000},
    {" nanosecond ns ", 0, 1, 1'000'000'000},
};

const PartFacts& factsOf(DatePart part) {
    return kParts[static_cast<std::size_t>(part)];
}

// From 0001-01-01 on.
Int128 nanosecondsOf(const DateTime& value) {
    return (static_cast<Int128>(value.days) * DateTime::kTicksPerDay + value.ticks) * 100;
}

[[noreturn]] void addOverflow() {
    throw sqlError(517, {"datetime"});
}

DateTime addMonths(const DateTime& value, std::int64_t months) {
    constexpr std::int64_t kMostMonths = 120'000;
    if (std::abs(months) > kMostMonths) addOverflow();
    CivilDate date = civilFromDays(value.days) + std::chrono::months(months);
    if (!date.ok()) date = date.year() / date.month() / std::chrono::last;  // January 31 and one month
    if (date.year() < year(1) || date.year() > year(9999)) addOverflow();
    return {daysFromCivil(date), value.ticks};
}

std::int64_t dayOfYear(std::int64_t day) {
    return day - daysFromCivil(civilFromDays(day).year() / 1 / 1) + 1;
}

// Sunday begins a week; 0001-01-01 is a Monday.
std::int64_t sundayWeeks(std::int64_t day) {
    return (day + 1) / 7;
}

std::int64_t ticksSince1970() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kSecond>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

DateTime at(std::int64_t ticksFrom1970) {
    return {kDay1970 + ticksFrom1970 / DateTime::kTicksPerDay, ticksFrom1970 % DateTime::kTicksPerDay};
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
    const auto number = [&](std::size_t at, std::size_t digits) {
        int value = 0;
        for (std::size_t i = at; i < at + digits && i < text.size(); ++i)
            value = value * 10 + (text[i] - '0');
        return value;
    };
    DateTime result;
    if (text.size() >= 10 && text[4] == '-') {
        result.days = daysFromCivil(year(number(0, 4)) / number(5, 2) / number(8, 2));
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
    if (type.id == TypeId::Date) return written(std::string(kIsoDate), value);
    const std::int64_t ticks = roundedTicks(value.ticks, type);
    const DateTime rounded{value.days + ticks / DateTime::kTicksPerDay, ticks % DateTime::kTicksPerDay};
    if (type.id == TypeId::Time) return written(std::string(kIsoTime), rounded, type.scale);
    const auto [first, last] = rangeOf(type.id);
    if (rounded.days < first || rounded.days > last) throw sqlError(242, {"datetime2", baseName(type.id)});
    return written(std::string(kIsoDate).append(" ").append(kIsoTime), rounded, type.scale);
}

std::string formatDateTime(const DateTime& value, const SqlType& type, int style) {
    const bool classic = isClassicDate(type.id);
    if (style == kNoStyle) style = classic ? 0 : 121;
    const bool iso8601 =
        style % 100 == 26 || style % 100 == 27;  // T between, and a fraction only where it is
    const Style pattern = styleFor(style, type);
    std::string whole(pattern.date);
    if (!whole.empty() && !pattern.time.empty()) whole += iso8601 ? 'T' : ' ';
    const int scale = iso8601 && value.ticks % kSecond == 0 ? 0 : classic ? 3 : type.scale;
    // Styles below 100 show two digits of the year, but for these, which always show four.
    const bool shortYear = style > 0 && style < 20 && style != 9 && style != 13;
    return written(whole.append(pattern.time), value, scale, shortYear);
}

std::optional<DatePart> findDatePart(std::string_view name) {
    const std::string wanted = ' ' + lowerAscii(name) + ' ';
    const auto found = std::find_if(std::begin(kParts), std::end(kParts), [&](const PartFacts& facts) {
        return facts.names.find(wanted) != std::string_view::npos;
    });
    if (found == std::end(kParts)) return std::nullopt;
    return static_cast<DatePart>(found - std::begin(kParts));
}

DateTime dateAdd(DatePart part, std::int64_t number, const DateTime& value) {
    const PartFacts& facts = factsOf(part);
    if (facts.months)
        return addMonths(value, std::clamp<std::int64_t>(number, -200'000, 200'000) * facts.months);
    const Int128 total = nanosecondsOf(value) + static_cast<Int128>(number) * facts.nanoseconds;
    if (total < 0 || total / kNanosADay > kLastDay) addOverflow();
    return {static_cast<std::int64_t>(total / kNanosADay),
            static_cast<std::int64_t>(total % kNanosADay / 100)};
}

std::int64_t dateDiff(DatePart part, const DateTime& start, const DateTime& end) {
    const PartFacts& facts = factsOf(part);
    if (part == DatePart::Week || part == DatePart::IsoWeek)
        return sundayWeeks(end.days) - sundayWeeks(start.days);
    const auto units = [&](const DateTime& value) -> Int128 {
        const CivilDate date = civilFromDays(value.days);
        const int months = static_cast<int>(date.year()) * 12 + static_cast<int>(unsigned{date.month()}) - 1;
        if (facts.months) return months / facts.months;
        return nanosecondsOf(value) / facts.nanoseconds;
    };
    const Int128 difference = units(end) - units(start);
    if (difference > INT64_MAX || difference < INT64_MIN) throw sqlError(535);
    return static_cast<std::int64_t>(difference);
}

std::int64_t datePart(DatePart part, const DateTime& value) {
    const CivilDate date = civilFromDays(value.days);
    switch (part) {
        case DatePart::Year:
            return static_cast<int>(date.year());
        case DatePart::Quarter:
            return (unsigned{date.month()} + 2) / 3;
        case DatePart::Month:
            return unsigned{date.month()};
        case DatePart::DayOfYear:
            return dayOfYear(value.days);
        case DatePart::Day:
            return unsigned{date.day()};
        case DatePart::Week:
            return sundayWeeks(value.days) - sundayWeeks(daysFromCivil(date.year() / 1 / 1)) + 1;
        case DatePart::IsoWeek:  // the Thursday of a week tells the year that it belongs to
            return (dayOfYear(value.days - value.days % 7 + 3) - 1) / 7 + 1;
        case DatePart::Weekday:
            return (value.days + 1) % 7 + 1;
        default:
            return value.ticks * 100 / factsOf(part).nanoseconds % factsOf(part).cycle;
    }
}

std::string dateName(DatePart part, const DateTime& value) {
    if (part == DatePart::Month) return written("%B", value);
    if (part == DatePart::Weekday) return written("%A", value);
    return std::to_string(datePart(part, value));
}

std::string monthName(int month) {
    return written("%B", {daysFromCivil(year(1900) / month / 1), 0});
}

DateTime localNow() {
    const std::int64_t ticks = ticksSince1970();
    const std::time_t seconds = ticks / kSecond;
    std::tm civil{};
    localtime_r(&seconds, &civil);
    return at(ticks + civil.tm_gmtoff * kSecond);
}

DateTime utcNow() {
    return at(ticksSince1970());
}

}  // namespace tsql
