// Points in time and durations as text.
#pragma once

#include <cstdint>
#include <string>

// Parses a time relative to now ("90m", "24h", "7d", "2w" ago) or a local time ("YYYY-MM-DD",
// "YYYY-MM-DD hh:mm", "YYYY-MM-DD hh:mm:ss"; "T" may replace the blank) into seconds since 1970. Throws
// Failure (kUsage).
// Also "today" and "yesterday", the beginning of that local day.
std::int64_t parseMoment(const std::string& text);

// Parses "90s", "5m", "2h" or "1d" into seconds. Throws Failure (kUsage).
std::int64_t parseSpan(const std::string& text);

// Local time in a format of strftime(); empty for 0.
std::string localTime(std::int64_t seconds, const char* format = "%Y-%m-%d %H:%M:%S");
std::string utcTime(std::int64_t seconds);   // "YYYY-MM-DDThh:mm:ssZ", empty for 0
std::string spanText(std::int64_t seconds);  // "12 s", "2 min 05 s", "3 h 02 min", "2 d 03 h"
