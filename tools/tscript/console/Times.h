// Moments and spans of time as people write and read them.
#pragma once

#include <cstdint>
#include <string>

// Seconds since 1970 of "90m", "24h", "7d" or "2w" ago, or of a local "YYYY-MM-DD", "YYYY-MM-DD hh:mm" or
// "YYYY-MM-DD hh:mm:ss" (a "T" for the blank is taken as well). Throws Failure (usage).
std::int64_t parseMoment(const std::string& text);

// "YYYY-MM-DD hh:mm:ss", or in strftime()'s form; empty for 0.
std::string localTime(std::int64_t seconds, const char* form = "%Y-%m-%d %H:%M:%S");
std::string utcTime(std::int64_t seconds);   // "YYYY-MM-DDThh:mm:ssZ", empty for 0
std::string spanText(std::int64_t seconds);  // "12 s", "2 min 05 s", "3 h 02 min", "2 d 03 h"
