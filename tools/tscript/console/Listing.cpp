#include "console/Listing.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "console/Console.h"
#include "console/Terminal.h"
#include "console/TextWidth.h"

namespace {

constexpr std::size_t kGap = 2;             // blanks between columns
constexpr std::size_t kLeastFlexible = 12;  // a column cut below this is of no use

constexpr const char* kColours[] = {"", "\x1b[32m", "\x1b[31m", "\x1b[33m", "\x1b[35m"};  // by Shade
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

std::string blanks(std::size_t count) {
    return std::string(count, ' ');
}

}  // namespace

Listing::Listing(std::vector<Column> columns)
    : m_columns(std::move(columns)),
      m_terminal(isTerminal(STDOUT_FILENO)),
      m_lively(isLivelyTerminal(STDOUT_FILENO)) {}

void Listing::writePage(const std::vector<Cells>& page) {
    std::vector<Cells> clean = page;
    for (Cells& row : clean)
        for (Cell& cell : row) cell.text = cleaned(cell.text);
    if (m_terminal && !m_settled) settle(clean);
    for (const Cells& row : clean) {
        if (m_upright) {
            writeUpright(row);
        } else if (m_terminal) {
            writeAligned(row);
        } else {
            std::string line;
            for (const Cell& cell : row) line += (&cell == &row.front() ? "" : "\t") + cell.text;
            writePainted(line + '\n');
        }
    }
}

// Flexible columns give way, the last one first.
void Listing::settle(const std::vector<Cells>& page) {
    m_settled = true;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        std::size_t width = widthOf(m_columns[i].title);
        for (const Cells& row : page) width = std::max(width, widthOf(row[i].text));
        m_widths.push_back(width);
    }
    const std::size_t room = terminalWidth(STDOUT_FILENO);
    std::size_t needed = std::accumulate(m_widths.begin(), m_widths.end(), kGap * (m_columns.size() - 1));
    for (std::size_t i = m_columns.size(); i-- > 0 && needed > room;) {
        if (!m_columns[i].flexible || m_widths[i] <= kLeastFlexible) continue;
        const std::size_t given = std::min(needed - room, m_widths[i] - kLeastFlexible);
        m_widths[i] -= given;
        needed -= given;
    }
    m_upright = needed > room;
    if (!m_upright && !page.empty()) writeHeading();
}

void Listing::writeHeading() const {
    Cells titles;
    for (const Column& column : m_columns) titles.push_back({column.title});
    writeAligned(titles, true);
}

void Listing::writeAligned(const Cells& row, bool heading) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string text = fitted(row[i].text, m_widths[i]);
        line += heading && m_lively ? kBold + text + kPlain : painted(row[i], text);
        if (i + 1 < row.size()) line += blanks(m_widths[i] - widthOf(text) + kGap);
    }
    writePainted(line + '\n');
}

void Listing::writeUpright(const Cells& row) const {
    std::size_t widest = 0;
    for (const Column& column : m_columns) widest = std::max(widest, widthOf(column.title));
    const std::size_t room = std::max<std::size_t>(terminalWidth(STDOUT_FILENO) - widest - kGap, 8);
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string title = m_columns[i].title;
        const std::string text = fitted(row[i].text, room);
        writePainted(title + blanks(widest - title.size() + kGap) + painted(row[i], text) + '\n');
    }
    writeResult("\n");
}

std::string Listing::painted(const Cell& cell, const std::string& text) const {
    if (!m_lively || cell.shade == Shade::kNone) return text;
    return kColours[static_cast<std::size_t>(cell.shade)] + text + kPlain;
}

void JsonListing::write(const Json& element) {
    writeResult((m_empty ? "[\n" : ",\n"));
    const std::string text = element.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::fwrite(text.data(), 1, text.size(), resultStream());
    m_empty = false;
}

void JsonListing::end() {
    writeResult(m_empty ? "[]\n" : "\n]\n");
}
