// Reads the date and time texts that people write.
#include <algorithm>
#include <optional>
#include <vector>

#include "DateTime.h"
#include "Text.h"
#include "Values.h"

namespace tsql {
namespace {

constexpr std::int64_t kSecond = DateTime::kTicksPerSecond;
constexpr int kTwoDigitCutoff = 50;  // 49 is 2049, 50 is 1950

struct Token {
    enum Kind { Number, Word, Sign } kind;
    std::string text;
    int value = 0;
};

// Lower-case words, numbers of at most nine digits, single signs. Nothing for any other character.
std::optional<std::vector<Token>> tokens(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789", kLetters = "abcdefghijklmnopqrstuvwxyz";
    const std::string lower = lowerAscii(text);
    std::vector<Token> result;
    for (std::size_t at = 0, end = 0; at < lower.size(); at = end) {
        const bool number = kDigits.find(lower[at]) != std::string_view::npos;
        const bool word = kLetters.find(lower[at]) != std::string_view::npos;
        const bool sign = std::string_view("/-.:,").find(lower[at]) != std::string_view::npos;
        end = number || word
                  ? std::min(lower.find_first_not_of(number ? kDigits : kLetters, at), lower.size())
                  : at + 1;
        if (!number && !word && !sign && lower[at] != ' ' && lower[at] != '\t') return std::nullopt;
        if (number && end - at > 9) return std::nullopt;
        const std::string part = lower.substr(at, end - at);
        if (number) result.push_back({Token::Number, part, std::stoi(part)});
        if (word || sign) result.push_back({word ? Token::Word : Token::Sign, part});
    }
    return result;
}

enum class DateOrder { MonthFirst, DayFirst, YearFirst };

DateOrder orderOf(int style) {
    const auto isOneOf = [style](std::initializer_list<int> styles) {
        return std::find(styles.begin(), styles.end(), style % 100) != styles.end();
    };
    return isOneOf({3, 4, 5, 6, 13})          ? DateOrder::DayFirst
           : isOneOf({2, 11, 12, 20, 21, 23}) ? DateOrder::YearFirst
                                              : DateOrder::MonthFirst;
}

int fullYear(const Token& token) {
    if (token.text.size() > 2) return token.value;
    return token.value + (token.value < kTwoDigitCutoff ? 2000 : 1900);
}

// The course: the tokens are taken from the left; a number before a colon or AM/PM begins the time,
// all others belong to the date, which is put together at the end.
class DateReader {
  public:
    DateReader(std::vector<Token> all, DateOrder order) : m_tokens(std::move(all)), m_order(order) {}

    std::optional<DateTime> read() {
        while (m_at < m_tokens.size())
            if (!(isTimeStart() ? takeTime() : takeDateToken())) return std::nullopt;
        if (!m_numbers.empty() || m_month != 0) {
            if (!buildDate()) return std::nullopt;
        } else if (!m_hasTime) {
            return m_tokens.empty() ? std::optional(m_result) : std::nullopt;
        }
        return m_result;
    }

  private:
    const Token* peek(std::size_t ahead = 0) const {
        return m_at + ahead < m_tokens.size() ? &m_tokens[m_at + ahead] : nullptr;
    }
    bool isSign(std::size_t ahead, char sign) const {
        const Token* token = peek(ahead);
        return token && token->kind == Token::Sign && token->text[0] == sign;
    }
    bool isHalfDay(std::size_t ahead) const {
        const Token* token = peek(ahead);
        return token && token->kind == Token::Word && (token->text == "am" || token->text == "pm");
    }
    bool isTimeStart() const { return peek()->kind == Token::Number && (isSign(1, ':') || isHalfDay(1)); }

    bool takeNumber(int most, int& value) {
        const Token* token = peek();
        if (!token || token->kind != Token::Number || token->value > most) return false;
        value = token->value;
        ++m_at;
        return true;
    }

    bool takeTime() {
        if (m_hasTime) return false;
        m_hasTime = true;
        int hour = 0, minute = 0, second = 0;
        std::int64_t fraction = 0;
        if (!takeNumber(23, hour)) return false;
        if (isSign(0, ':') && (++m_at, !takeNumber(59, minute))) return false;
        if (isSign(0, ':') && (++m_at, !takeNumber(59, second))) return false;
        if ((isSign(0, '.') || isSign(0, ':')) && !takeFraction(fraction)) return false;
        if (isHalfDay(0) && !takeHalfDay(hour)) return false;
        if (peek() && peek()->text == "z") ++m_at;
        m_result.ticks = ((hour * 60LL + minute) * 60 + second) * kSecond + fraction;
        return true;
    }

    // ".5" is half a second, ":500" thousandths.
    bool takeFraction(std::int64_t& fraction) {
        const bool thousandths = isSign(0, ':');
        ++m_at;
        const Token* token = peek();
        if (!token || token->kind != Token::Number) return false;
        const int scale = thousandths ? 3 : static_cast<int>(token->text.size());
        fraction = static_cast<std::int64_t>(rescaled(token->value, scale, 7, Rounding::Truncate));
        ++m_at;
        return fraction < kSecond;
    }

    bool takeHalfDay(int& hour) {
        const bool afternoon = peek()->text == "pm";
        ++m_at;
        if (hour > 12) return afternoon;
        hour = hour % 12 + (afternoon ? 12 : 0);
        return true;
    }

    bool takeDateToken() {
        const Token& token = m_tokens[m_at++];
        if (token.kind == Token::Number) {
            m_numbers.push_back(token);
            return m_numbers.size() <= 3;
        }
        if (token.kind == Token::Sign) return token.text != ":" && (!m_numbers.empty() || m_month != 0);
        if (token.text == "t") return !m_numbers.empty() && peek() && isTimeStart();
        return takeMonthName(token.text);
    }

    bool takeMonthName(const std::string& word) {
        if (word.size() < 3 || m_month != 0) return false;
        for (int month = 1; month <= 12; ++month) {
            const std::string name = lowerAscii(monthName(month));
            if (word == name || word == name.substr(0, 3)) m_month = month;
        }
        return m_month != 0;
    }

    bool buildDate() {
        const std::size_t count = m_numbers.size();
        if (m_month != 0 ? count == 0 || count > 2 : count != 1 && count != 3) return false;
        const bool yearFirst = m_numbers[0].text.size() == 4;
        const auto days = m_month != 0 ? dateWithName(yearFirst)
                          : count == 1 ? compactDate()
                                       : dateOfThree(yearFirst || m_order == DateOrder::YearFirst);
        m_result.days = days.value_or(0);
        return days.has_value();
    }

    std::optional<std::int64_t> dateWithName(bool yearFirst) const {
        if (m_numbers.size() == 1) return daysFromParts(yearFirst ? m_numbers[0].value : 0, m_month, 1);
        return daysFromParts(fullYear(m_numbers[yearFirst ? 0 : 1]), m_month,
                             m_numbers[yearFirst ? 1 : 0].value);
    }

    // 2026, 261121 or 20261121.
    std::optional<std::int64_t> compactDate() const {
        const auto& [kind, digits, value] = m_numbers[0];
        if (digits.size() == 4) return daysFromParts(value, 1, 1);
        const Token year{kind, digits.substr(0, digits.size() == 6 ? 2 : 4), value / 10000};
        return daysFromParts(digits.size() == 6 || digits.size() == 8 ? fullYear(year) : 0, value / 100 % 100,
                             value % 100);
    }

    std::optional<std::int64_t> dateOfThree(bool yearFirst) const {
        const Token& last = m_numbers[2];
        const int a = m_numbers[0].value, b = m_numbers[1].value;
        if (yearFirst) return daysFromParts(fullYear(m_numbers[0]), b, last.value);
        return m_order == DateOrder::DayFirst ? daysFromParts(fullYear(last), b, a)
                                              : daysFromParts(fullYear(last), a, b);
    }

    std::vector<Token> m_tokens;
    DateOrder m_order;
    std::size_t m_at = 0;
    std::vector<Token> m_numbers;
    int m_month = 0;
    bool m_hasTime = false;
    DateTime m_result;
};

}  // namespace

std::optional<DateTime> parseDateTime(std::string_view text, int style) {
    auto parts = tokens(text);
    if (!parts) return std::nullopt;
    return DateReader(std::move(*parts), style < 0 ? DateOrder::MonthFirst : orderOf(style)).read();
}

}  // namespace tsql
