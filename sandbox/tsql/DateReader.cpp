// Reads the date and time texts that people write.
#include <algorithm>
#include <array>
#include <optional>

#include "DateTime.h"
#include "Messages.h"
#include "SqlTypes.h"
#include "Text.h"
#include "Values.h"

namespace tsql {
namespace {

constexpr int kTwoDigitCutoff = 50;  // 49 is 2049, 50 is 1950

struct Number {
    int value = 0;
    std::size_t digits = 0;
};

// A text as its form and the numbers in it. In the form a number is an n, the name of a month an M, AM and PM
// are A and P, T and Z and signs are themselves, blanks are left out: "Nov 21, 2026 1:05PM" is "Mn,nn:nP".
struct Form {
    std::string letters;
    std::array<Number, 8> numbers{};
    std::size_t count = 0;
    int month = 0;
};

// Nothing for a word that no date has.
std::optional<char> letterOf(std::string_view word, int& month) {
    constexpr std::pair<std::string_view, char> kWords[] = {{"am", 'A'}, {"pm", 'P'}, {"t", 'T'}, {"z", 'Z'}};
    for (const auto& [known, letter] : kWords)
        if (word == known) return letter;
    for (month = 1; month <= 12; ++month) {
        const std::string name = lowerAscii(monthName(month));
        if (word == name || word == name.substr(0, 3)) return 'M';
    }
    return std::nullopt;
}

// Nothing for other characters and for longer or more numbers than dates have.
std::optional<Form> formOf(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789", kLetters = "abcdefghijklmnopqrstuvwxyz";
    constexpr std::size_t kLongest = 9;
    Form form;
    const std::string lower = lowerAscii(text);
    std::size_t length = 1;
    for (std::string_view rest = lower; !rest.empty(); rest.remove_prefix(length)) {
        const auto run = [rest](std::string_view of) {
            return std::min(rest.find_first_not_of(of), rest.size());
        };
        length = std::max<std::size_t>({run(kDigits), run(kLetters), run(" \t"), 1});
        if (run(kDigits) > 0) {
            if (length > kLongest || form.count == form.numbers.size()) return std::nullopt;
            form.numbers[form.count++] = {std::stoi(std::string(rest.substr(0, length))), length};
            form.letters += 'n';
        } else if (run(kLetters) > 0) {
            const auto letter = letterOf(rest.substr(0, length), form.month);
            if (!letter) return std::nullopt;
            form.letters += *letter;
        } else if (std::string_view("/-.:,").find(rest[0]) != std::string_view::npos) {
            form.letters += rest[0];
        } else if (run(" \t") == 0) {
            return std::nullopt;
        }
    }
    return form;
}

enum class DateOrder { MonthFirst, DayFirst, YearFirst };

DateOrder orderOf(int style) {
    const auto isOneOf = [style](std::initializer_list<int> styles) {
        return std::ranges::find(styles, style % 100) != styles.end();
    };
    if (style == 130 || style == 131) throw unsupported("the Hijri calendar (styles 130 and 131)");
    return isOneOf({3, 4, 5, 6, 13})                  ? DateOrder::DayFirst
           : isOneOf({2, 11, 12, 20, 21, 23, 26, 27}) ? DateOrder::YearFirst
                                                      : DateOrder::MonthFirst;
}

bool isOneOf(std::string_view form, std::initializer_list<std::string_view> forms) {
    return std::ranges::find(forms, form) != forms.end();
}

// The course: the time is found by its colon or its AM or PM and taken out; what is left must be a date.
class DateReader {
  public:
    DateReader(const Form& form, DateOrder order, std::size_t fractionDigits)
        : m_form(form), m_order(order), m_fractionDigits(fractionDigits) {}

    bool read() { return takeTime() && takeDate(); }
    bool isInRange() const { return m_inRange; }
    const DateTime& result() const { return m_result; }

  private:
    bool isAt(std::size_t at, std::string_view letters) const {
        return at < m_form.letters.size() && letters.find(m_form.letters[at]) != std::string_view::npos;
    }

    bool takeTime() {
        std::string& letters = m_form.letters;
        std::size_t begin = 0;
        while (begin < letters.size() && !(letters[begin] == 'n' && isAt(begin + 1, ":AP"))) ++begin;
        if (begin == letters.size()) return true;
        std::size_t end = begin + 1;
        while (isAt(end, ":.") && isAt(end + 1, "n")) end += 2;
        const std::string form = letters.substr(begin, end - begin);
        const char half = isAt(end, "AP") ? letters[end++] : ' ';
        if (isAt(end, "Z")) ++end;
        const auto first = static_cast<std::size_t>(
            std::count(letters.begin(), letters.begin() + static_cast<std::ptrdiff_t>(begin), 'n'));
        const auto numbers = std::span(m_form.numbers).subspan(first);
        if (begin > 1 && letters[begin - 1] == 'T') --begin;
        letters.erase(begin, end - begin);
        if (!setTime(form, numbers, half)) return false;
        std::ranges::copy(numbers.subspan(form.size() / 2 + 1), numbers.begin());
        return true;
    }

    bool setTime(std::string_view form, std::span<const Number> numbers, char half) {
        if (!isOneOf(form, {"n:n", "n:n:n", "n:n:n.n", "n:n:n:n"}) && !(form == "n" && half != ' '))
            return false;
        const auto part = [&](std::size_t i) { return i <= form.size() / 2 ? numbers[i].value : 0; };
        int hour = part(0);
        if (half == 'A' && hour > 12) return false;
        if (half != ' ' && hour <= 12) hour = hour % 12 + (half == 'P' ? 12 : 0);
        m_inRange = hour < 24 && part(1) < 60 && part(2) < 60;
        m_result.ticks = ((hour * 60LL + part(1)) * 60 + part(2)) * DateTime::kTicksPerSecond;
        return form.size() < 7 || addFraction(numbers[3], form[5] == ':');
    }

    // ".5" is half a second, ":500" thousandths.
    bool addFraction(const Number& fraction, bool thousandths) {
        constexpr int kTickDigits = 7;
        const auto digits = thousandths ? 3 : static_cast<int>(fraction.digits);
        if (fraction.digits > (thousandths ? 3 : m_fractionDigits)) return false;
        m_result.ticks += fraction.value * powerOfTen(kTickDigits - digits);
        return true;
    }

    bool takeDate() {
        std::string& form = m_form.letters;
        const auto& [first, second, third, a, b, c, d, e] = m_form.numbers;
        const bool yearFirst = first.digits == 4;
        if (m_form.month != 0)
            std::erase_if(form, [](char letter) { return letter != 'M' && letter != 'n'; });
        if (form.empty()) return true;
        if (isOneOf(form, {"Mn", "nM"})) return yearFirst && setDay(first, m_form.month, 1);
        if (isOneOf(form, {"Mnn", "nMn", "nnM"}))
            return yearFirst ? setDay(first, m_form.month, second.value)
                             : setDay(second, m_form.month, first.value);
        if (form == "n") return setCompactDay(first);
        if (!isOneOf(form, {"n/n/n", "n-n-n", "n.n.n"})) return false;
        if (yearFirst || m_order == DateOrder::YearFirst) return setDay(first, second.value, third.value);
        return m_order == DateOrder::DayFirst ? setDay(third, second.value, first.value)
                                              : setDay(third, first.value, second.value);
    }

    // 2026, 261121 or 20261121
    bool setCompactDay(const Number& number) {
        if (number.digits == 4) return setDay(number, 1, 1);
        if (number.digits != 6 && number.digits != 8) return false;
        const Number year{number.value / 10000, number.digits - 4};
        return setDay(year, number.value / 100 % 100, number.value % 100);
    }

    bool setDay(const Number& year, int month, int day) {
        const int century = year.digits > 2 ? 0 : year.value < kTwoDigitCutoff ? 2000 : 1900;
        const auto days = daysFromParts(century + year.value, month, day);
        m_inRange = m_inRange && days;
        m_result.days = days.value_or(0);
        return true;
    }

    Form m_form;
    DateOrder m_order;
    std::size_t m_fractionDigits;
    bool m_inRange = true;
    DateTime m_result;
};

}  // namespace

DateTime parseDateTime(std::string_view text, const SqlType& from, const SqlType& to, int style) {
    constexpr int kNoDate = 241, kNoSmallDate = 295, kOutOfRange = 242;
    const bool classic = isClassicDate(to.id);
    const int noDate = to.id == TypeId::SmallDateTime ? kNoSmallDate : kNoDate;
    const auto form = formOf(text);
    if (!form) throw sqlError(noDate);
    DateReader reader(*form, orderOf(style), classic ? 3 : 7);
    if (!reader.read()) throw sqlError(noDate);
    if (reader.isInRange()) return reader.result();
    if (!classic) throw sqlError(noDate);
    throw sqlError(kOutOfRange, {baseName(from.id), baseName(to.id)});
}

}  // namespace tsql
