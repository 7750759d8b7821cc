#include "package/PercentSigns.h"

#include <algorithm>

namespace {

constexpr std::size_t kMostFindings = 20;
constexpr const char* kBlanked = "a percent sign between /* and */ becomes a blank";
constexpr const char* kInLineComment = "a placeholder in a -- comment takes a parameter";
constexpr const char* kNotFilled = "%%s takes a parameter and comes out as %s; write %% s or change the text";
constexpr const char* kDoubled = "%% before the last placeholder comes out as one percent sign";

}  // namespace

void PercentSigns::take(std::string_view line, std::size_t number) {
    m_line = number;
    if (m_place == Place::kLineComment) m_place = Place::kStatement;
    for (std::size_t i = 0; i < line.size();) {
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (line[i] == '%' && !m_blockComment) {
            i += takeRun(line, i);
            continue;
        }
        if (line[i] == '%') find(m_findings, kBlanked);
        follow(line[i], next);
        ++i;
    }
}

// A run of percent signs, with the "s" behind it when it is a placeholder's. The bytes taken.
std::size_t PercentSigns::takeRun(std::string_view line, std::size_t at) {
    const std::size_t end = std::min(line.find_first_not_of('%', at), line.size());
    const std::size_t length = end - at;
    if (end < line.size() && line[end] == 's') {
        takePlaceholder(length);
        return length + 1;
    }
    if (length > 1) find(m_doubled, kDoubled);
    return length;
}

// Doubled signs are taken in pairs from the left, so that an even number leaves none for the placeholder.
void PercentSigns::takePlaceholder(std::size_t percentSigns) {
    ++m_placeholders;
    for (const PackageFinding& finding : m_doubled)
        if (m_findings.size() < kMostFindings) m_findings.push_back(finding);
    m_doubled.clear();
    if (percentSigns % 2 == 0) {
        find(m_findings, kNotFilled);
    } else if (percentSigns > 1) {
        find(m_findings, kDoubled);
    }
    if (m_place == Place::kLineComment) find(m_findings, kInLineComment);
}

// One finding of a kind a line.
void PercentSigns::find(std::vector<PackageFinding>& list, const char* text) const {
    const bool known = !list.empty() && list.back().line == m_line && list.back().text == text;
    if (!known && list.size() < kMostFindings) list.push_back({m_line, text});
}

// Block comments begin and end wherever their signs stand, in texts as well, as they do for a run.
void PercentSigns::follow(char c, char next) {
    if (c == '/' && next == '*') {
        m_blockComment = true;
    } else if (c == '*' && next == '/') {
        m_blockComment = false;
    } else if (!m_blockComment && c == '\'' && m_place != Place::kLineComment) {
        m_place = m_place == Place::kText ? Place::kStatement : Place::kText;
    } else if (!m_blockComment && c == '-' && next == '-' && m_place == Place::kStatement) {
        m_place = Place::kLineComment;
    }
}
