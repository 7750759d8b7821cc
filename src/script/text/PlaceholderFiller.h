// Replacement of "%s" placeholders in a package's statements by the caller's values.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::string_view kPlaceholder = "%s";

// Replaces percent signs in block comments by blanks, so that comments contain no placeholders. Line comments
// are not recognised (docs/quirks.md).
std::string blankPercentSignsInComments(std::string_view body);

// Writes a body piece by piece. Each segment up to and including its placeholder is interpreted as a format
// string: a doubled percent sign in it becomes one. The text behind the last filled placeholder is written
// unchanged, unfilled placeholders included.
class PlaceholderFiller {
  public:
    using Escape = std::function<std::string(const std::string& value)>;
    using Write = std::function<bool(std::string_view text)>;

    PlaceholderFiller(Escape escape, Write write) : m_escape(std::move(escape)), m_write(std::move(write)) {}

    // Stops with false when a write fails. Values without a placeholder are ignored.
    bool fill(std::string_view body, const std::vector<std::string>& values);

    // The values that filled a placeholder, unescaped, joined by ", ".
    const std::string& joinedValues() const { return m_joined; }

  private:
    bool writeSegment(std::string_view segment, std::string_view value);
    void join(const std::string& value, bool first);

    Escape m_escape;
    Write m_write;
    std::string m_joined;
};
