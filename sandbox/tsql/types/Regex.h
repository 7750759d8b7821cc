// Regular expressions that sessions share.
#pragma once

#include <mutex>
#include <regex>

namespace tsql {

// One thread compiles at a time: std::regex fills a cache of characters that all threads share.
inline std::regex compiled(const char* expression) {
    static std::mutex compiling;
    const std::lock_guard lock(compiling);
    return std::regex(expression);
}

}  // namespace tsql
