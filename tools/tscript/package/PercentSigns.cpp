#include "package/PercentSigns.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr const char* kBlanked = "a percent sign between /* and */ becomes a blank";
constexpr const char* kInLineComment = "a placeholder in a -- comment uses up a parameter";
constexpr const char* kInName = "a placeholder in a name: a value can end the name and continue as SQL";
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
        const auto isWord = [&](std::size_t i) {
            return i < line.size() &&
                   (std::isalnum(static_cast<unsigned char>(line[i])) != 0 || line[i] == '_');
        };
        addPlaceholder(length, (at > 0 && isWord(at - 1)) || isWord(end + 1), number);
        return length + 1;
    }
    if (length > 1) addFinding(m_doubled, number, kDoubled);
    return length;
}

// A run replaces pairs of signs from the left, so that an even number leaves none for the placeholder.
void PercentSigns::addPlaceholder(std::size_t percentSigns, bool isPartOfWord, std::size_t number) {
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
    if (m_context == Context::kName || (m_context == Context::kStatement && isPartOfWord))
        addFinding(m_findings, number, kInName);
}

// A run starts and ends block comments inside string literals as well.
void PercentSigns::updateContext(char c, char next) {
    if (c == '/' && next == '*') {
        m_inBlockComment = true;
    } else if (c == '*' && next == '/') {
        m_inBlockComment = false;
    } else if (!m_inBlockComment && c == '\'' && m_context == Context::kString) {
        m_context = Context::kStatement;
    } else if (!m_inBlockComment && c == ']' && m_context == Context::kName) {
        m_context = Context::kStatement;
    } else if (!m_inBlockComment && m_context == Context::kStatement && (c == '\'' || c == '[')) {
        m_context = c == '[' ? Context::kName : Context::kString;
    } else if (!m_inBlockComment && c == '-' && next == '-' && m_context == Context::kStatement) {
        m_context = Context::kLineComment;
    }
}
