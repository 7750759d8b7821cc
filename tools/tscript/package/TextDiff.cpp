#include "package/TextDiff.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::size_t kContext = 3;
constexpr std::size_t kMostLines = 5000;  // that are compared each with each

using Lines = std::vector<PackageLine>;

struct Edit {
    char mark;  // ' ', '-' or '+'
    const PackageLine* line;
};
using Edits = std::vector<Edit>;

void append(Edits& edits, char mark, const Lines& lines, std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) edits.push_back({mark, &lines[i]});
}

// The part between the equal beginnings and the equal ends, by the longest common subsequence.
class Middle {
  public:
    Middle(const Lines& before, const Lines& after, std::size_t start, std::size_t endBefore,
           std::size_t endAfter)
        : m_before(before),
          m_after(after),
          m_start(start),
          m_rows(endBefore - start),
          m_columns(endAfter - start) {}

    void appendTo(Edits& edits) {
        std::size_t i = 0;
        std::size_t j = 0;
        if (m_rows <= kMostLines && m_columns <= kMostLines) {
            measure();
            while (i < m_rows && j < m_columns) {
                if (areEqual(i, j)) {
                    append(edits, ' ', m_before, m_start + i, m_start + i + 1);
                    ++i, ++j;
                } else if (common(i + 1, j) >= common(i, j + 1)) {
                    append(edits, '-', m_before, m_start + i, m_start + i + 1);
                    ++i;
                } else {
                    append(edits, '+', m_after, m_start + j, m_start + j + 1);
                    ++j;
                }
            }
        }
        append(edits, '-', m_before, m_start + i, m_start + m_rows);
        append(edits, '+', m_after, m_start + j, m_start + m_columns);
    }

  private:
    bool areEqual(std::size_t i, std::size_t j) const {
        return m_before[m_start + i].text == m_after[m_start + j].text;
    }
    // Length of the longest common subsequence of what follows line i and line j.
    std::uint16_t& common(std::size_t i, std::size_t j) { return m_common[i * (m_columns + 1) + j]; }

    void measure() {
        m_common.assign((m_rows + 1) * (m_columns + 1), 0);
        for (std::size_t i = m_rows; i-- > 0;)
            for (std::size_t j = m_columns; j-- > 0;)
                common(i, j) = areEqual(i, j) ? static_cast<std::uint16_t>(common(i + 1, j + 1) + 1)
                                              : std::max(common(i + 1, j), common(i, j + 1));
    }

    const Lines& m_before;
    const Lines& m_after;
    std::size_t m_start;
    std::size_t m_rows;
    std::size_t m_columns;
    std::vector<std::uint16_t> m_common;
};

Edits editsOf(const Lines& before, const Lines& after) {
    const auto areEqual = [](const PackageLine& a, const PackageLine& b) { return a.text == b.text; };
    const auto start = static_cast<std::size_t>(
        std::mismatch(before.begin(), before.end(), after.begin(), after.end(), areEqual).first -
        before.begin());
    std::size_t endBefore = before.size();
    std::size_t endAfter = after.size();
    while (endBefore > start && endAfter > start && areEqual(before[endBefore - 1], after[endAfter - 1]))
        --endBefore, --endAfter;
    Edits edits;
    append(edits, ' ', before, 0, start);
    Middle(before, after, start, endBefore, endAfter).appendTo(edits);
    append(edits, ' ', before, endBefore, before.size());
    return edits;
}

}  // namespace

std::string unifiedDiff(const Lines& before, const Lines& after) {
    const Edits edits = editsOf(before, after);
    std::string text;
    std::size_t written = 0;  // number of edits so far
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (edits[i].mark == ' ' || i < written) continue;
        const std::size_t first = std::max(written, i - std::min(i, kContext));
        std::size_t last = i;  // of the changes that are at most twice the context apart
        for (std::size_t j = i; j < edits.size() && j <= last + 2 * kContext; ++j)
            if (edits[j].mark != ' ') last = j;
        written = std::min(last + 1 + kContext, edits.size());
        text += "@@ line " + std::to_string(edits[first].line->number) + " @@\n";
        for (std::size_t j = first; j < written; ++j) text += edits[j].mark + edits[j].line->text + "\n";
    }
    return text;
}
