#include "console/Listing.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "console/Console.h"
#include "console/Terminal.h"
#include "console/TextWidth.h"

namespace {

constexpr std::size_t kGap = 2;               // blanks between columns
constexpr std::size_t kNarrowestColumn = 12;  // of a truncated one
constexpr std::size_t kNarrowestValue = 8;    // in the vertical layout

// SGR sequences by Shade.
constexpr const char* kStyles[] = {"", "\x1b[32m", "\x1b[31m", "\x1b[33m", "\x1b[35m", "\x1b[1m"};
constexpr const char* kResetStyle = "\x1b[0m";

std::string blanks(std::size_t count) {
    return std::string(count, ' ');
}

}  // namespace

Listing::Listing(std::vector<Column> columns)
    : m_columns(std::move(columns)),
      m_terminal(isTerminal(STDOUT_FILENO)),
      m_ansi(isAnsiTerminal(STDOUT_FILENO)) {}

void Listing::writePage(const std::vector<Cells>& page) {
    std::vector<Cells> clean = page;
    for (Cells& row : clean)
        for (Cell& cell : row) cell.text = withoutControls(cell.text);
    if (m_terminal && !m_layoutChosen) chooseLayout(clean);
    for (const Cells& row : clean) {
        if (m_vertical) {
            writeVertical(row);
        } else if (m_terminal) {
            writeAligned(row);
        } else {
            std::string line;
            for (const Cell& cell : row) line += (&cell == &row.front() ? "" : "\t") + cell.text;
            writeStyled(line + '\n');
        }
    }
}

// Truncates flexible columns, the last one first, until the row fits.
void Listing::chooseLayout(const std::vector<Cells>& page) {
    m_layoutChosen = true;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        std::size_t width = displayWidth(m_columns[i].title);
        for (const Cells& row : page) width = std::max(width, displayWidth(row[i].text));
        m_widths.push_back(width);
    }
    const std::size_t available = terminalWidth(STDOUT_FILENO);
    std::size_t needed = std::accumulate(m_widths.begin(), m_widths.end(), kGap * (m_columns.size() - 1));
    for (std::size_t i = m_columns.size(); i-- > 0 && needed > available;) {
        if (!m_columns[i].flexible || m_widths[i] <= kNarrowestColumn) continue;
        const std::size_t excess = std::min(needed - available, m_widths[i] - kNarrowestColumn);
        m_widths[i] -= excess;
        needed -= excess;
    }
    m_vertical = needed > available;
    if (!m_vertical && !page.empty()) writeHeading();
}

void Listing::writeHeading() const {
    Cells titles;
    for (const Column& column : m_columns) titles.push_back({column.title, Shade::kHeading});
    writeAligned(titles);
}

void Listing::writeAligned(const Cells& row) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string text = truncated(row[i].text, m_widths[i]);
        line += coloured(row[i], text);
        if (i + 1 < row.size()) line += blanks(m_widths[i] - displayWidth(text) + kGap);
    }
    writeStyled(line + '\n');
}

void Listing::writeVertical(const Cells& row) const {
    std::size_t widest = 0;
    for (const Column& column : m_columns) widest = std::max(widest, displayWidth(column.title));
    const std::size_t available = std::max(terminalWidth(STDOUT_FILENO) - widest - kGap, kNarrowestValue);
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string title = m_columns[i].title;
        const std::string text = truncated(row[i].text, available);
        writeStyled(title + blanks(widest - title.size() + kGap) + coloured(row[i], text) + '\n');
    }
    writeResult("\n");
}

std::string Listing::coloured(const Cell& cell, const std::string& text) const {
    if (!m_ansi || cell.shade == Shade::kNone) return text;
    return kStyles[static_cast<std::size_t>(cell.shade)] + text + kResetStyle;
}

void JsonListing::write(const Json& element) {
    writeResult(m_empty ? "[\n" : ",\n");
    const std::string line = jsonLine(element);
    const std::string text = isTerminal(STDOUT_FILENO) ? withoutControls(line) : line;
    std::fwrite(text.data(), 1, text.size(), resultStream());
    m_empty = false;
}

void JsonListing::end() {
    writeResult(m_empty ? "[]\n" : "\n]\n");
}
