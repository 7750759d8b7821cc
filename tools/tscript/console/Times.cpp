#include "console/Times.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <sstream>

#include "console/Outcome.h"

namespace {

constexpr struct {
    char letter;
    std::int64_t seconds;
} kUnits[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}, {'w', 604800}};

constexpr std::int64_t kMostUnits = 1'000'000;

// Seconds of a text like "90m"; 0 for any other text.
std::int64_t parseUnits(const std::string& text) {
    std::int64_t count = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc() || rest + 1 != end || count < 1 || count > kMostUnits) return 0;
    for (const auto& unit : kUnits)
        if (unit.letter == *rest) return count * unit.seconds;
    return 0;
}

// Beginning of the local day; 0 for any other text.
std::int64_t parseDay(const std::string& text) {
    if (text != "today" && text != "yesterday") return 0;
    const std::time_t now = std::time(nullptr);
    std::tm day{};
    localtime_r(&now, &day);
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    day.tm_mday -= text == "yesterday" ? 1 : 0;
    day.tm_isdst = -1;
    return std::mktime(&day);
}

// Returns 0 if the text is no local time, or names a day that its month does not have.
std::int64_t parseLocal(const std::string& text) {
    for (const char* format :
         {"%Y-%m-%d", "%Y-%m-%d %H:%M", "%Y-%m-%dT%H:%M", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"}) {
        std::tm time{};
        const char* end = strptime(text.c_str(), format, &time);
        if (end == nullptr || *end != '\0') continue;
        const int day = time.tm_mday;
        time.tm_isdst = -1;
        const std::time_t seconds = std::mktime(&time);
        if (seconds > 0 && time.tm_mday == day) return seconds;
    }
    return 0;
}

std::string formatted(const char* format, const std::tm& time) {
    std::ostringstream text;
    text << std::put_time(&time, format);
    return text.str();
}

std::string twoParts(std::int64_t seconds, std::int64_t unit, const char* unitName, std::int64_t part,
                     const char* partName) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%lld %s %02lld %s", static_cast<long long>(seconds / unit),
                  unitName, static_cast<long long>(seconds % unit / part), partName);
    return text.data();
}

}  // namespace

std::int64_t parseMoment(const std::string& text) {
    const std::int64_t now = std::time(nullptr);
    if (const std::int64_t ago = parseUnits(text); ago > 0 && ago < now) return now - ago;
    if (const std::int64_t day = parseDay(text)) return day;
    if (const std::int64_t moment = parseLocal(text)) return moment;
    throw Failure(ExitCode::kUsage, "'" + text.substr(0, 64) + "' is not a time",
                  "Write 90m, 24h, 7d or 2w for a time that long ago, today, yesterday, 2026-01-31 or "
                  "\"2026-01-31 18:30\".");
}

std::int64_t parseSpan(const std::string& text) {
    if (const std::int64_t seconds = parseUnits(text)) return seconds;
    throw Failure(ExitCode::kUsage, "'" + text.substr(0, 64) + "' is not a length of time",
                  "Write 90s, 5m, 2h or 1d.");
}

std::string localTime(std::int64_t seconds, const char* format) {
    const std::time_t moment = seconds;
    std::tm time{};
    if (seconds == 0 || localtime_r(&moment, &time) == nullptr) return {};
    return formatted(format, time);
}

std::string utcTime(std::int64_t seconds) {
    const std::time_t moment = seconds;
    std::tm time{};
    if (seconds == 0 || gmtime_r(&moment, &time) == nullptr) return {};
    return formatted("%Y-%m-%dT%H:%M:%SZ", time);
}

std::string spanText(std::int64_t seconds) {
    if (seconds < 60) return std::to_string(seconds) + " s";
    if (seconds < 3600) return twoParts(seconds, 60, "min", 1, "s");
    if (seconds < 86400) return twoParts(seconds, 3600, "h", 60, "min");
    return twoParts(seconds, 86400, "d", 3600, "h");
}
