// A package's statements with the caller's values in their "%s" placeholders.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Percent signs inside block comments become blanks, so that no comment holds a placeholder. Line comments do
// not count (docs/quirks.md).
std::string blankPercentSignsInComments(std::string_view body);

// Writes a body piece by piece. Each segment up to and including its placeholder is a format text of its own:
// a doubled percent sign in it comes out as one. What follows the last filled placeholder is written as it
// stands, unfilled placeholders included.
class PlaceholderFiller {
  public:
    using Escape = std::function<std::string(const std::string& value)>;
    using Write = std::function<bool(std::string_view text)>;

    PlaceholderFiller(Escape escape, Write write) : m_escape(std::move(escape)), m_write(std::move(write)) {}

    // False as soon as a write fails. Values without a placeholder are dropped.
    bool fill(std::string_view body, const std::vector<std::string>& values);

    // The values that met a placeholder, as they were given, joined by ", ".
    const std::string& joinedValues() const { return m_joined; }

  private:
    bool writeSegment(std::string_view segment, std::string_view value);
    void join(const std::string& value, bool first);

    Escape m_escape;
    Write m_write;
    std::string m_joined;
};
