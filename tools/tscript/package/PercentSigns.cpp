#include "package/PercentSigns.h"

#include <algorithm>

namespace {

constexpr std::size_t kMostFindings = 20;
constexpr const char* kBlanked = "a percent sign between /* and */ becomes a blank";
constexpr const char* kInLineComment = "a placeholder in a -- comment uses up a parameter";
constexpr const char* kNotFilled = "%%s uses up a parameter and becomes %s; write %% s or change the text";
constexpr const char* kDoubled = "%% before the last placeholder becomes one percent sign";

// Adds a finding unless the list ends with the same one for this line.
void addFinding(std::vector<PackageFinding>& list, std::size_t line, const char* text) {
    const bool isKnown = !list.empty() && list.back().line == line && list.back().text == text;
    if (!isKnown && list.size() < kMostFindings) list.push_back({line, text});
}

}  // namespace

void PercentSigns::readLine(std::string_view line, std::size_t number) {
    if (m_context == Context::kLineComment) m_context = Context::kStatement;
    for (std::size_t i = 0; i < line.size();) {
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (line[i] == '%' && !m_inBlockComment) {
            i += readPercentSigns(line, i, number);
            continue;
        }
        if (line[i] == '%') addFinding(m_findings, number, kBlanked);
        updateContext(line[i], next);
        ++i;
    }
}

// Reads adjacent percent signs and an "s" after them. Returns the number of bytes read.
std::size_t PercentSigns::readPercentSigns(std::string_view line, std::size_t at, std::size_t number) {
    const std::size_t end = std::min(line.find_first_not_of('%', at), line.size());
    const std::size_t length = end - at;
    if (end < line.size() && line[end] == 's') {
        addPlaceholder(length, number);
        return length + 1;
    }
    if (length > 1) addFinding(m_doubled, number, kDoubled);
    return length;
}

// A run replaces pairs of signs from the left, so that an even number leaves none for the placeholder.
void PercentSigns::addPlaceholder(std::size_t percentSigns, std::size_t number) {
    ++m_placeholders;
    for (const PackageFinding& finding : m_doubled)
        if (m_findings.size() < kMostFindings) m_findings.push_back(finding);
    m_doubled.clear();
    if (percentSigns % 2 == 0) {
        addFinding(m_findings, number, kNotFilled);
    } else if (percentSigns > 1) {
        addFinding(m_findings, number, kDoubled);
    }
    if (m_context == Context::kLineComment) addFinding(m_findings, number, kInLineComment);
}

// A run starts and ends block comments inside string literals as well.
void PercentSigns::updateContext(char c, char next) {
    if (c == '/' && next == '*') {
        m_inBlockComment = true;
    } else if (c == '*' && next == '/') {
        m_inBlockComment = false;
    } else if (!m_inBlockComment && c == '\'' && m_context != Context::kLineComment) {
        m_context = m_context == Context::kString ? Context::kStatement : Context::kString;
    } else if (!m_inBlockComment && c == '-' && next == '-' && m_context == Context::kStatement) {
        m_context = Context::kLineComment;
    }
}
