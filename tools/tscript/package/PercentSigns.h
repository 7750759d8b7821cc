// Percent signs of a package's statements: its placeholders, and what else a run would interpret.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct PackageFinding {
    std::size_t line = 0;  // 0: the package as a whole
    std::string text;
};

// Line by line, as a run reads them: in block comments percent signs become blanks, in line comments they
// count, and "%%" comes out as one up to the last placeholder.
class PercentSigns {
  public:
    void take(std::string_view line, std::size_t number);

    std::size_t placeholders() const { return m_placeholders; }
    const std::vector<PackageFinding>& findings() const { return m_findings; }

  private:
    enum class Place { kStatement, kText, kLineComment };

    std::size_t takeRun(std::string_view line, std::size_t at);
    void takePlaceholder(std::size_t percentSigns);
    void find(std::vector<PackageFinding>& list, const char* text) const;
    void follow(char c, char next);

    std::vector<PackageFinding> m_findings;
    std::vector<PackageFinding> m_doubled;  // since the last placeholder
    std::size_t m_placeholders = 0;
    std::size_t m_line = 0;
    Place m_place = Place::kStatement;
    bool m_blockComment = false;
};
