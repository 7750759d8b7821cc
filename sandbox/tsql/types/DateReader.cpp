// Parser of date and time strings.
#include <boost/date_time/date_parsing.hpp>
#include <boost/date_time/gregorian/greg_month.hpp>

#include "messages/Messages.h"
#include "types/DateTime.h"
#include "types/Decimal.h"
#include "types/Regex.h"
#include "types/Text.h"

namespace tsql {
namespace {

constexpr int kTwoDigitCutoff = 50;                     // 49 is 2049, 50 is 1950
constexpr std::size_t kTickDigits = 7, kLongest = 100;  // of a second, of a string
// Styles of CONVERT that accept a date of numbers, by its order.
constexpr std::string_view kMonthFirst = "-1 0 1 10 22 101 110", kDayFirst = "3 4 5 103 104 105",
                           kYearFirst = "2 11 20 21 23 25 102 111 120 121 126 127";

struct Number {
    int value = 0;
    std::ptrdiff_t digits = 0;
};

// Parser of one string. It finds the time and removes it; the rest must be a date.
struct DateReader {
    bool isClassic;         // the type is datetime or smalldatetime, which have no offsets
    bool isInRange = true;  // whether such a date and time exist
    DateTime result = {};

    bool read(std::string_view text, int style) {
        std::string rest(text.substr(0, kLongest + 1));
        const bool isPlain = text.find_first_of(isClassic ? "\t\n\v\f\r" : "\n\v\f\r") == text.npos;
        return isPlain && rest.size() <= kLongest && takeTime(rest) && takeDate(rest, style);
    }

    // hh[:mm[:ss[.f]]] [AM|PM] [Z|+hh:mm], with : or AM or PM; a T only between yyyy-mm-dd and hh:mm:ss
    bool takeTime(std::string& text) {
        static const std::regex kTime = compiled(
            R"((?:^|\s|T(?=\d\d:\d\d:\d\d))(\d\d?)(?=:|\s*[AaPp][Mm])(?::(\d\d?)(?::(\d\d?)(?:([.:])(\d+))?)?)?)"
            R"(\s*([AaPp][Mm])?\s*(Z|[-+]\s*\d\d?:\d\d?)?(?!\S))");
        std::smatch found;
        if (text.find_first_of(":mM") == text.npos || !std::regex_search(text, found, kTime)) return true;
        const bool hasT = *found[0].first == 'T', isIso = found.position() == 10 && text[4] == '-';
        if ((hasT && !isIso) || (!isClassic && found.suffix().length() > 0)) return false;
        if (hasT && !isClassic && found.str().find_first_of(" \tMm") != text.npos) return false;
        const std::string half = lowerAscii(found.str(6)), offset = found[7];
        const bool inThousandths = found[4] == ":";  // 1:05:07:5
        const auto number = [&](std::size_t part) { return found.length(part) ? std::stoi(found[part]) : 0; };
        int hour = number(1);
        if ((half == "am" && hour > 12) || (half == "pm" && hour == 0)) return false;
        if (!half.empty() && hour <= 12) hour = hour % 12 + (half == "pm" ? 12 : 0);
        isInRange = hour < 24 && number(2) < 60 && number(3) < 60;
        result.at += std::chrono::seconds((hour * 60 + number(2)) * 60 + number(3));
        std::string fraction = found[5];
        if (fraction.size() > 3 && (inThousandths || isClassic)) return false;
        if (inThousandths) fraction.insert(0, 3 - fraction.size(), '0');
        fraction.resize(kTickDigits + 1, '0');  // the last one is rounded
        result.at += Ticks((std::stoi(fraction) + 5) / 10);
        text.erase(static_cast<std::size_t>(found.position()), static_cast<std::size_t>(found.length()));
        return offset.size() < 2 || setOffset(offset);
    }

    // "+hh:mm"
    bool setOffset(const std::string& offset) {
        const int minutes = std::stoi(offset.substr(offset.find(':') + 1));
        result.offset = std::chrono::minutes(std::stoi(offset.substr(1)) * 60 + minutes);
        if (offset[0] == '-') result.offset *= -1;
        return !isClassic && minutes < 60 && abs(result.offset) <= kMostOffset;
    }

    // Numbers, or the name of a month with one or two numbers.
    bool takeDate(const std::string& text, int style) {
        static const std::regex kDate =
            compiled(R"(\s*(?:(\d+)(?:\s*([-/.])\s*(?:(\d+)|([a-zA-Z]+))\s*\2\s*(\d+))?|)"
                     R"((?:(\d+)[\s,]*)?(?:(\d+)[\s,]*)?([a-zA-Z]+)(?:[\s,]*(\d+))?(?:[\s,]*(\d+))?)?\s*)");
        std::smatch found;
        if (!std::regex_match(text, found, kDate)) return false;
        std::vector<Number> numbers;
        for (const std::size_t group : {1U, 3U, 5U, 6U, 7U, 9U, 10U})
            if (const auto digits = found.length(group); digits > 0)
                numbers.push_back({digits > 8 ? 0 : std::stoi(found[group]), digits});
        const std::size_t count = numbers.size();
        if (found.length(4) + found.length(8) == 0)
            return count == 0 || (count == 1 ? setCompactDay(numbers[0]) : setNumbers(numbers, style));
        const int month =
            boost::date_time::month_str_to_ushort<boost::gregorian::greg_month>(found.str(4) + found.str(8));
        if (month > 12 || count == 0 || count > 2) return false;
        if (numbers[0].digits == 4) return setDay(numbers[0], month, count > 1 ? numbers[1].value : 1);
        return count > 1 && setDay(numbers[1], month, numbers[0].value);
    }

    // Four digits in front are the year, unless a style of other types than datetime has it elsewhere.
    bool setNumbers(std::vector<Number> numbers, int style) {
        const auto is = [style](std::string_view styles) { return hasWord(styles, std::to_string(style)); };
        const bool isFree = style <= 0, isLong = style >= 20 && style != 22, dayFirst = is(kDayFirst);
        const bool hasOrder = is(kMonthFirst) || dayFirst || is(kYearFirst);
        if (!hasOrder && !isClassic) throw sqlError(kStyleNotFollowed, {std::to_string(style)});
        if (!hasOrder) return false;
        if (is(kYearFirst) || (numbers[0].digits == 4 && (isClassic || isFree)))
            std::rotate(numbers.begin(), numbers.begin() + 1, numbers.end());
        return (isFree || (numbers[2].digits == 4) == isLong) &&
               setDay(numbers[2], numbers[dayFirst].value, numbers[!dayFirst].value);
    }

    // 2026, 261121 or 20261121
    bool setCompactDay(const Number& number) {
        if (number.digits == 4) return setDay(number, 1, 1);
        const Number year{number.value / 10000, number.digits - 4};
        return (number.digits == 6 || number.digits == 8) &&
               setDay(year, number.value / 100 % 100, number.value % 100);
    }

    bool setDay(const Number& year, int month, int day) {
        if (year.digits == 3 || year.digits > 4) return false;
        const int century = year.digits > 2 ? 0 : year.value < kTwoDigitCutoff ? 2000 : 1900;
        const auto date = dayOf(century + year.value, month, day);
        isInRange = isInRange && date;
        result.at = date.value_or(kDay1900) + result.time();
        return true;
    }
};

}  // namespace

DateTime parseDateTime(std::string_view text, const SqlType& from, const SqlType& to, int style) {
    DateReader reader{isClassicDate(to.id)};
    const bool isDate = reader.read(text, style);
    if (isDate && reader.isInRange) return reader.result;
    if (isDate && reader.isClassic) throw sqlError(kDateOutOfRange, {baseName(from.id), baseName(to.id)});
    throw sqlError(to.id == TypeId::SmallDateTime ? kBadSmallDateTimeText : kBadDateText);
}

}  // namespace tsql
