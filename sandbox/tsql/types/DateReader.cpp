// Parser of date and time strings.
#include <array>

#include "messages/Messages.h"
#include "types/DateTime.h"
#include "types/Decimal.h"
#include "types/Text.h"

namespace tsql {
namespace {

constexpr int kTwoDigitCutoff = 50;  // 49 is 2049, 50 is 1950

struct Number {
    int value = 0;
    std::size_t digits = 0;
};

template <typename T>
bool isOneOf(const T& value, std::initializer_list<T> values) {
    return std::ranges::find(values, value) != values.end();
}

// Parser of one string. It reduces the string to its form and its numbers, finds the time by its colon or its
// AM or PM and removes it; the rest must be a date.
// The form has one character for each part: n number, M month name, A and P for AM and PM, T, Z and
// punctuation. Blanks are dropped: "Nov 21, 2026 1:05PM" is "Mn,nn:nP".
class DateReader {
  public:
    explicit DateReader(std::size_t fractionDigits) : m_fractionDigits(fractionDigits) {}

    bool read(std::string_view text, int style) {
        return takeForm(lowerAscii(text)) && takeTime() && takeDate(style);
    }
    bool isInRange() const { return m_inRange; }  // whether such a date and time exist
    const DateTime& result() const { return m_result; }

  private:
    // False if the string has other characters, or more or longer numbers than dates have.
    bool takeForm(std::string_view rest) {
        constexpr std::string_view kDigits = "0123456789", kLetters = "abcdefghijklmnopqrstuvwxyz";
        constexpr std::size_t kLongest = 9;
        for (std::size_t length = 1; !rest.empty(); rest.remove_prefix(length)) {
            const bool number = kDigits.find(rest[0]) != rest.npos,
                       word = kLetters.find(rest[0]) != rest.npos;
            length = !number && !word
                         ? 1
                         : std::min(rest.find_first_not_of(number ? kDigits : kLetters), rest.size());
            if (number) {
                if (length > kLongest || m_count == m_numbers.size()) return false;
                m_numbers[m_count++] = {std::stoi(std::string(rest.substr(0, length))), length};
            }
            if (rest[0] == ' ' || rest[0] == '\t') continue;
            m_form += number ? 'n' : word ? letterOf(rest.substr(0, length)) : rest[0];
        }
        return m_form.find_first_not_of("nMAPTZ/-.:,") == std::string::npos;
    }

    char letterOf(std::string_view word) {
        constexpr std::pair<std::string_view, char> kWords[] = {
            {"am", 'A'}, {"pm", 'P'}, {"t", 'T'}, {"z", 'Z'}};
        for (const auto& [known, letter] : kWords)
            if (word == known) return letter;
        for (m_month = 1; m_month <= 12; ++m_month) {
            const std::string name = lowerAscii(monthName(m_month));
            if (word == name || word == name.substr(0, 3)) return 'M';
        }
        return '?';
    }

    bool isAt(std::size_t at, std::string_view letters) const {
        return at < m_form.size() && letters.find(m_form[at]) != letters.npos;
    }

    bool takeTime() {
        std::size_t begin = 0, first = 0;
        for (; begin < m_form.size() && !isAt(begin + 1, ":AP"); ++begin) first += m_form[begin] == 'n';
        if (begin == m_form.size()) return true;
        std::size_t end = begin + 1;
        while (isAt(end, ":.") && isAt(end + 1, "n")) end += 2;
        const std::string form = m_form.substr(begin, end - begin);
        const char half = isAt(end, "AP") ? m_form[end++] : ' ';
        if (isAt(end, "Z")) ++end;
        if (begin > 1 && m_form[begin - 1] == 'T') --begin;  // a T between date and time
        m_form.erase(begin, end - begin);
        const auto numbers = std::span(m_numbers).subspan(first);
        if (!setTime(form, numbers, half)) return false;
        std::ranges::copy(numbers.subspan(form.size() / 2 + 1), numbers.begin());
        return true;
    }

    bool setTime(std::string_view form, std::span<const Number> numbers, char half) {
        if (!isOneOf<std::string_view>(form, {"n:n", "n:n:n", "n:n:n.n", "n:n:n:n"}) &&
            !(form == "n" && half != ' '))
            return false;
        const auto part = [&](std::size_t i) { return i <= form.size() / 2 ? numbers[i].value : 0; };
        int hour = part(0);
        if ((half == 'A' && hour > 12) || (half == 'P' && hour == 0)) return false;
        if (half != ' ' && hour <= 12) hour = hour % 12 + (half == 'P' ? 12 : 0);
        m_inRange = hour < 24 && part(1) < 60 && part(2) < 60;
        m_result.at += std::chrono::seconds((hour * 60LL + part(1)) * 60 + part(2));
        return form.size() < 7 || addFraction(numbers[3], form[5] == ':');
    }

    // ".5" is half a second, ":500" is 500 thousandths.
    bool addFraction(const Number& fraction, bool thousandths) {
        constexpr int kTickDigits = 7;
        if (fraction.digits > (thousandths ? 3 : m_fractionDigits)) return false;
        const int digits = thousandths ? 3 : static_cast<int>(fraction.digits);
        m_result.at += Ticks(fraction.value * powerOfTen(kTickDigits - digits));
        return true;
    }

    bool takeDate(int style) {
        const Number &first = m_numbers[0], &second = m_numbers[1], &third = m_numbers[2];
        const bool yearFirst = first.digits == 4;
        if (m_month != 0) std::erase_if(m_form, [](char c) { return c != 'M' && c != 'n'; });
        if (m_form.empty()) return true;
        if (m_form == "n") return setCompactDay(first);
        if (m_form == "Mn" || m_form == "nM") return yearFirst && setDay(first, m_month, 1);
        if (m_form == "Mnn" || m_form == "nMn" || m_form == "nnM")
            return yearFirst ? setDay(first, m_month, second.value) : setDay(second, m_month, first.value);
        if (m_form != "n/n/n" && m_form != "n-n-n" && m_form != "n.n.n") return false;
        if (yearFirst || isOneOf(style % 100, {2, 11, 12, 20, 21, 23, 26, 27}))
            return setDay(first, second.value, third.value);
        const bool dayFirst = isOneOf(style % 100, {3, 4, 5, 6, 13});
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

    std::size_t m_fractionDigits;
    std::string m_form;
    std::array<Number, 8> m_numbers{};
    std::size_t m_count = 0;
    int m_month = 0;
    bool m_inRange = true;
    DateTime m_result;
};

}  // namespace

DateTime parseDateTime(std::string_view text, const SqlType& from, const SqlType& to, int style) {
    const bool classic = isClassicDate(to.id);
    DateReader reader(classic ? 3 : 7);
    const bool isDate = reader.read(text, style);
    if (isDate && reader.isInRange()) return reader.result();
    if (isDate && classic) throw sqlError(kDateOutOfRange, {baseName(from.id), baseName(to.id)});
    throw sqlError(to.id == TypeId::SmallDateTime ? kBadSmallDateTimeText : kBadDateText);
}

}  // namespace tsql
