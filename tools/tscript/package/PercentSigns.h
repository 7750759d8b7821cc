// Percent signs in a package's statements: placeholders, and other signs that a run would interpret.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::size_t kMostFindings = 20;  // of a check

struct PackageFinding {
    std::size_t line = 0;  // from 1; 0: concerns the whole package
    std::string text;
    std::size_t column = 0;  // in bytes, from 1; 0: concerns the whole line
    std::string word{};      // at that column
};

// Reads the statements line by line as a run does: percent signs in block comments become blanks, those in
// line comments count, and "%%" becomes one sign up to the last placeholder.
class PercentSigns {
  public:
    void readLine(std::string_view line, std::size_t number);

    std::size_t placeholders() const { return m_placeholders; }
    const std::vector<PackageFinding>& findings() const { return m_findings; }

  private:
    enum class Context { kStatement, kString, kName, kLineComment };

    std::size_t readPercentSigns(std::string_view line, std::size_t at, std::size_t number);
    void addPlaceholder(std::size_t percentSigns, bool isPartOfWord, std::size_t number);
    void updateContext(char c, char next);

    std::vector<PackageFinding> m_findings;
    std::vector<PackageFinding> m_doubled;  // since the last placeholder
    std::size_t m_placeholders = 0;
    Context m_context = Context::kStatement;
    bool m_inBlockComment = false;
};
