// Regular expressions of POSIX: <regex> takes many seconds to compile.
#pragma once

#include <regex.h>

#include <string>

class Pattern {
  public:
    explicit Pattern(const std::string& extended) {  // extended notation; must be valid
        regcomp(&m_pattern, ("^(" + extended + ")$").c_str(), REG_EXTENDED | REG_NOSUB);
    }
    ~Pattern() { regfree(&m_pattern); }
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    // Whether the whole string matches.
    bool matches(const std::string& text) const {
        return regexec(&m_pattern, text.c_str(), 0, nullptr, 0) == 0;
    }

  private:
    regex_t m_pattern{};
};
