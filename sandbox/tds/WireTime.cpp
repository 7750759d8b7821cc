#include "WireTime.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "WireType.h"

namespace tds {
namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kFirstDay = std::chrono::year(1) / 1 / 1;
constexpr std::int64_t kPowersOfTen[] = {1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000};

// Takes fields of digits from the front of a text.
class FieldReader {
  public:
    explicit FieldReader(std::string_view text) : m_whole(text), m_rest(text) {}

    bool atEnd() const { return m_rest.empty(); }
    bool next(char c) const { return !m_rest.empty() && m_rest.front() == c; }
    bool startsDate() const { return m_rest.size() > 4 && m_rest[4] == '-'; }
    char take() {
        if (m_rest.empty()) fail();
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }
    void expect(char c) {
        if (take() != c) fail();
    }
    int digits(int count) {
        int value = 0;
        while (count-- > 0) value = 10 * value + digit();
        return value;
    }
    std::int64_t fraction() {
        std::int64_t ticks = 0;
        int count = 0;
        for (; !m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9'; ++count) {
            if (count == 7) fail();
            ticks = 10 * ticks + digit();
        }
        return ticks * kPowersOfTen[7 - count];
    }
    [[noreturn]] void fail() const { throw ValueError("'" + std::string(m_whole) + "' is no date and time"); }

  private:
    int digit() {
        const char c = take();
        if (c < '0' || c > '9') fail();
        return c - '0';
    }

    std::string_view m_whole;
    std::string_view m_rest;
};

std::int64_t parseDays(FieldReader& reader) {
    const int year = reader.digits(4);
    reader.expect('-');
    const int month = reader.digits(2);
    reader.expect('-');
    const int day = reader.digits(2);
    const auto date = std::chrono::year(year) / month / day;
    if (!date.ok()) reader.fail();
    return (sys_days(date) - kFirstDay).count();
}

std::int64_t parseTicks(FieldReader& reader) {
    std::int64_t seconds = 3600L * reader.digits(2);
    reader.expect(':');
    seconds += 60L * reader.digits(2);
    if (reader.next(':')) {
        reader.expect(':');
        seconds += reader.digits(2);
    }
    std::int64_t ticks = seconds * kTicksPerSecond;
    if (reader.next('.')) {
        reader.expect('.');
        ticks += reader.fraction();
    }
    if (ticks >= kTicksPerDay) reader.fail();
    return ticks;
}

int parseOffset(FieldReader& reader) {
    const char sign = reader.take();
    if (sign != '+' && sign != '-') reader.fail();
    const int hours = reader.digits(2);
    reader.expect(':');
    const int minutes = 60 * hours + reader.digits(2);
    return sign == '-' ? -minutes : minutes;
}

}  // namespace

DateTimeParts parseDateTime(std::string_view text) {
    FieldReader reader(text);
    DateTimeParts parts;
    parts.days = kDaysTo1900;
    if (reader.startsDate()) {
        parts.days = parseDays(reader);
        if (reader.atEnd()) return parts;
        reader.take();  // a blank or the letter T
    }
    parts.ticks = parseTicks(reader);
    if (reader.next(' ')) reader.take();
    if (!reader.atEnd()) parts.offsetMinutes = parseOffset(reader);
    if (!reader.atEnd()) reader.fail();
    return parts;
}

std::string dateText(std::int64_t days) {
    const year_month_day date(kFirstDay + std::chrono::days(days));
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

std::string timeText(std::int64_t ticks, int scale) {
    const std::int64_t seconds = ticks / kTicksPerSecond;
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%07d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                  static_cast<int>(ticks % kTicksPerSecond));
    return std::string(text, scale == 0 ? 8 : 9 + static_cast<std::size_t>(scale));
}

}  // namespace tds
