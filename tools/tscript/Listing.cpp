#include "Listing.h"

#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <numeric>
#include <string_view>

#include "Console.h"
#include "Terminal.h"

namespace {

constexpr std::size_t kGap = 2;             // blanks between columns
constexpr std::size_t kLeastFlexible = 12;  // a column cut below this is of no use
constexpr const char* kEllipsis = "…";

constexpr const char* kColours[] = {"", "\x1b[32m", "\x1b[31m", "\x1b[33m", "\x1b[35m"};  // by Shade
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

struct Glyph {
    std::size_t bytes;
    std::size_t width;
    bool control;
};

// The character at the text's beginning; a byte that begins none is taken as a control character.
Glyph glyphAt(std::string_view text) {
    wchar_t c = 0;
    std::mbstate_t state{};
    const std::size_t length = std::mbrtowc(&c, text.data(), text.size(), &state);
    if (length == 0 || length > text.size()) return {1, 1, true};
    const int width = wcwidth(c);
    return width < 0 ? Glyph{length, 1, true} : Glyph{length, static_cast<std::size_t>(width), false};
}

std::string cleaned(std::string_view text) {
    std::string clean;
    for (std::size_t at = 0; at < text.size();) {
        const Glyph glyph = glyphAt(text.substr(at));
        clean += glyph.control ? std::string_view(" ") : text.substr(at, glyph.bytes);
        at += glyph.bytes;
    }
    return clean;
}

std::size_t widthOf(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Glyph glyph = glyphAt(text.substr(at));
        width += glyph.width;
        at += glyph.bytes;
    }
    return width;
}

// The longest beginning that is no wider.
std::string_view beginning(std::string_view text, std::size_t width) {
    std::size_t at = 0;
    while (at < text.size()) {
        const Glyph glyph = glyphAt(text.substr(at));
        if (glyph.width > width) break;
        width -= glyph.width;
        at += glyph.bytes;
    }
    return text.substr(0, at);
}

std::string fitted(const std::string& text, std::size_t width) {
    if (widthOf(text) <= width) return text;
    return std::string(beginning(text, width - 1)) + kEllipsis;
}

std::string blanks(std::size_t count) {
    return std::string(count, ' ');
}

}  // namespace

Listing::Listing(std::vector<Column> columns)
    : m_columns(std::move(columns)),
      m_terminal(isTerminal(STDOUT_FILENO)),
      m_lively(isLivelyTerminal(STDOUT_FILENO)) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // for the width of characters
}

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
            writeResult(line + '\n');
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
    writeResult(line + '\n');
}

void Listing::writeUpright(const Cells& row) const {
    std::size_t widest = 0;
    for (const Column& column : m_columns) widest = std::max(widest, widthOf(column.title));
    const std::size_t room = std::max<std::size_t>(terminalWidth(STDOUT_FILENO) - widest - kGap, 8);
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string title = m_columns[i].title;
        const std::string text = fitted(row[i].text, room);
        writeResult(title + blanks(widest - title.size() + kGap) + painted(row[i], text) + '\n');
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
    std::fwrite(text.data(), 1, text.size(), stdout);
    m_empty = false;
}

void JsonListing::end() {
    writeResult(m_empty ? "[]\n" : "\n]\n");
}
