// Points in time and durations as text.
#pragma once

#include <cstdint>
#include <string>

// Parses a time into seconds since 1970: relative to now ("90m", "24h", "7d", "2w" ago), the beginning of the
// local day ("today", "yesterday"), or local ("YYYY-MM-DD", "YYYY-MM-DD hh:mm", "YYYY-MM-DD hh:mm:ss"; "T"
// may replace the blank). Throws Failure (kUsage), also for a time before 1970.
std::int64_t parseMoment(const std::string& text);

// Parses "90s", "5m", "2h", "1d" or "2w" into seconds. Throws Failure (kUsage).
std::int64_t parseSpan(const std::string& text);

// Formats seconds since 1970 as local time, with a format of strftime(); empty for 0.
std::string localTime(std::int64_t seconds, const char* format = "%Y-%m-%d %H:%M:%S");
std::string utcTime(std::int64_t seconds);   // "YYYY-MM-DDThh:mm:ssZ", empty for 0
std::string spanText(std::int64_t seconds);  // "12 s", "2 min 05 s", "3 h 02 min", "2 d 03 h"
