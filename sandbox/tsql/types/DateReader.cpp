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

constexpr int kTwoDigitCutoff = 50;     // 49 is 2049, 50 is 1950
constexpr std::size_t kTickDigits = 7;  // of a second
// Styles of CONVERT, without the century, whose dates of numbers do not begin with the month.
constexpr int kYearFirst[] = {2, 11, 12, 20, 21, 23, 26, 27}, kDayFirst[] = {3, 4, 5, 6, 13};

struct Number {
    int value = 0;
    std::size_t digits = 0;
};

// Parser of one string. It finds the time and removes it; the rest must be a date, which is reduced to its
// numbers and its form. The form has one character for each part: N number, M month name, and punctuation
// without blanks. "Nov 21, 2026" is "MN,N".
class DateReader {
  public:
    explicit DateReader(bool isClassic) : m_isClassic(isClassic) {}

    bool read(std::string_view text, int style) {
        constexpr std::size_t kLongest = 100;
        std::string rest = lowerAscii(text.substr(0, kLongest + 1));
        return rest.size() <= kLongest && takeTime(rest) && takeForm(rest) && takeDate(style);
    }
    bool isInRange() const { return m_inRange; }  // whether such a date and time exist
    const DateTime& result() const { return m_result; }

  private:
    // hh[:mm[:ss[.fraction]]] [AM|PM] [Z|+hh:mm], with minutes or AM or PM: with a colon or an M
    bool takeTime(std::string& text) {
        static const std::regex kTime =
            compiled(R"((?:^|[\st])(\d\d?)(?=:|\s*[ap]m)(?::(\d\d?))?(?::(\d\d?)(?:([.:])(\d+))?)?)"
                     R"(\s*([ap]m)?\s*(z|[-+]\d\d:\d\d)?(?!\S))");
        std::smatch found;
        if (text.find_first_of(":m") == text.npos || !std::regex_search(text, found, kTime)) return true;
        const std::string half = found[6], offset = found[7];
        const bool inThousandths = found[4] == ":";  // 1:05:07:5
        const auto number = [&](std::size_t part) { return found.length(part) ? std::stoi(found[part]) : 0; };
        int hour = number(1);
        if ((half == "am" && hour > 12) || (half == "pm" && hour == 0)) return false;
        if (!half.empty() && hour <= 12) hour = hour % 12 + (half == "pm" ? 12 : 0);
        m_inRange = hour < 24 && number(2) < 60 && number(3) < 60;
        m_result.at += std::chrono::seconds((hour * 60 + number(2)) * 60 + number(3));
        std::string fraction = found[5];
        if (fraction.size() > (inThousandths || m_isClassic ? 3 : kTickDigits)) return false;
        if (inThousandths) fraction.insert(0, 3 - fraction.size(), '0');
        fraction.resize(kTickDigits, '0');
        m_result.at += Ticks(std::stoi(fraction));
        text.erase(static_cast<std::size_t>(found.position()), static_cast<std::size_t>(found.length()));
        return offset.size() < 2 || setOffset(offset);
    }

    // "+hh:mm"
    bool setOffset(const std::string& offset) {
        const int minutes = std::stoi(offset.substr(4));
        m_result.offset = std::chrono::minutes(std::stoi(offset.substr(1, 2)) * 60 + minutes);
        const bool isOffset = minutes < 60 && m_result.offset <= kMostOffset;
        if (offset[0] == '-') m_result.offset *= -1;
        return isOffset && !m_isClassic;
    }

    bool takeForm(const std::string& text) {
        using boost::date_time::month_str_to_ushort;
        constexpr int kNoMonth = 13;
        static const std::regex kPart = compiled(R"((\d+)|[a-z]+|\S)");
        for (std::sregex_iterator part(text.begin(), text.end(), kPart), end; part != end; ++part) {
            const std::string word = part->str();
            const bool isNumber = part->length(1) > 0;
            const int month = isNumber ? kNoMonth : month_str_to_ushort<boost::gregorian::greg_month>(word);
            m_form += isNumber ? 'N' : month < kNoMonth ? 'M' : word[0];
            if (month < kNoMonth) m_month = month;
            if (isNumber) m_numbers.push_back({word.size() > 8 ? 0 : std::stoi(word), word.size()});
        }
        m_numbers.resize(3);
        return m_form.find_first_not_of("NM/-.,") == std::string::npos;
    }

    bool takeDate(int style) {
        const Number &first = m_numbers[0], &second = m_numbers[1], &third = m_numbers[2];
        const bool yearFirst = first.digits == 4;
        if (m_month != 0) std::erase_if(m_form, [](char c) { return c != 'M' && c != 'N'; });
        if (m_form.empty()) return true;
        if (m_form == "N") return setCompactDay(first);
        if (m_form == "MN" || m_form == "NM") return yearFirst && setDay(first, m_month, 1);
        if (m_form == "MNN" || m_form == "NMN" || m_form == "NNM")
            return yearFirst ? setDay(first, m_month, second.value) : setDay(second, m_month, first.value);
        if (m_form != "N/N/N" && m_form != "N-N-N" && m_form != "N.N.N") return false;
        if (yearFirst || std::ranges::count(kYearFirst, style % 100) > 0)
            return setDay(first, second.value, third.value);
        const bool dayFirst = std::ranges::count(kDayFirst, style % 100) > 0;
        return dayFirst ? setDay(third, second.value, first.value) : setDay(third, first.value, second.value);
    }

    // 2026, 261121 or 20261121
    bool setCompactDay(const Number& number) {
        if (number.digits == 4) return setDay(number, 1, 1);
        const Number year{number.value / 10000, number.digits - 4};
        return (number.digits == 6 || number.digits == 8) &&
               setDay(year, number.value / 100 % 100, number.value % 100);
    }

    bool setDay(const Number& year, int month, int day) {
        const int century = year.digits > 2 ? 0 : year.value < kTwoDigitCutoff ? 2000 : 1900;
        const auto date = dayOf(century + year.value, month, day);
        m_inRange = m_inRange && date;
        m_result.at = date.value_or(kDay1900) + m_result.time();
        return true;
    }

    bool m_isClassic;  // the type is datetime or smalldatetime, which have no offsets
    std::string m_form;
    std::vector<Number> m_numbers;
    int m_month = 0;
    bool m_inRange = true;
    DateTime m_result;
};

}  // namespace

DateTime parseDateTime(std::string_view text, const SqlType& from, const SqlType& to, int style) {
    const bool classic = isClassicDate(to.id);
    DateReader reader(classic);
    const bool isDate = reader.read(text, style);
    if (isDate && reader.isInRange()) return reader.result();
    if (isDate && classic) throw sqlError(kDateOutOfRange, {baseName(from.id), baseName(to.id)});
    throw sqlError(to.id == TypeId::SmallDateTime ? kBadSmallDateTimeText : kBadDateText);
}

}  // namespace tsql
