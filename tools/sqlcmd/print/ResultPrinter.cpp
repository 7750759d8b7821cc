#include "print/ResultPrinter.h"

#include <algorithm>

#include "text/Utf.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kBytesPerCharacter = 4;  // of UTF-8, at most
constexpr std::string_view kNull = "NULL";

std::size_t lineWidthOf(const Layout& layout, const Output& output) {
    constexpr std::size_t kTerminalWidth = 80;
    if (layout.lineWidth != 0) return static_cast<std::size_t>(layout.lineWidth);
    return output.isTerminal() ? kTerminalWidth : 0;
}

}  // namespace

ResultPrinter::ResultPrinter(RunningBatch& batch, const Layout& layout, const ResultMode& mode,
                             Output& output)
    : m_batch(batch), m_layout(layout), m_mode(mode), m_output(output) {
    // -k2 shortens a value before it is cut: its beginning may be a single run of control characters.
    const bool needsWholeValues = mode.xml || layout.controlCharacters == ControlCharacters::RunToBlank;
    for (const ColumnInfo& column : batch.columns()) {
        m_formats.push_back(formatOf(column, layout));
        const std::size_t limit = needsWholeValues ? 0 : m_formats.back().limit;
        m_neededBytes.push_back(limit == 0 ? RunningBatch::kWholeValue : limit * kBytesPerCharacter);
    }
}

std::size_t ResultPrinter::width() const {
    constexpr std::size_t kUnlimited = 8000;
    std::size_t width = m_formats.size() - 1;  // separators
    for (const ColumnFormat& format : m_formats) width += format.width != 0 ? format.width : kUnlimited;
    return width;
}

void ResultPrinter::print(Progress& progress) {
    m_lineWidth = lineWidthOf(m_layout, m_output);
    if (isHeadingDue(0)) printHeading();
    for (; m_batch.nextRow(); ++m_row) {
        progress.addRow();
        if (m_row > 0 && isHeadingDue(m_row)) {
            m_output.write("\n");
            printHeading();
        }
        printRow();
    }
    if (m_mode.xml) m_output.write("\n");
}

bool ResultPrinter::isHeadingDue(long long row) const {
    if (m_mode.xml || !m_layout.withHeading || m_layout.rowsPerHeading < 0) return false;
    return row == 0 || (m_layout.rowsPerHeading > 0 && row % m_layout.rowsPerHeading == 0);
}

void ResultPrinter::printHeading() {
    TextBuffer names;
    std::string dashes;
    for (const ColumnFormat& format : m_formats) {
        const std::size_t nameLength = utf8Length(format.name);
        const std::size_t width = m_layout.trimBlanks ? std::max<std::size_t>(nameLength, 1) : format.width;
        if (&format != &m_formats.front()) {
            names.append(m_layout.separator);
            dashes += m_layout.separator;
        }
        appendPadded(names, format.name, m_layout.trimBlanks ? 0 : width, /*rightAligned=*/false);
        dashes.append(std::max<std::size_t>(width, 1), '-');
    }
    writeLine(names.view());
    writeLine(dashes);
}

void ResultPrinter::printRow() {
    m_line.clear();
    if (m_mode.xml) {
        m_batch.appendValue(0, m_neededBytes[0], m_line);
        return m_output.write(m_line.view());
    }
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        if (i > 0) m_line.append(m_layout.separator);
        const std::size_t start = m_line.size();
        appendValue(i);
        if (i == 0 && m_mode.lastValue != nullptr) *m_mode.lastValue = m_line.view();
        if (m_layout.trimBlanks)
            m_line.truncate(start + m_line.from(start).find_last_not_of(' ') + 1);
        else
            padValue(m_line, start, m_formats[i]);
    }
    if (m_lineWidth != 0) return writeLine(m_line.view());
    m_line.append('\n');
    m_output.write(m_line.view());
}

// Appends the printed form of a value to the line.
void ResultPrinter::appendValue(std::size_t column) {
    const ColumnFormat& format = m_formats[column];
    const std::size_t start = m_line.size();
    if (!m_batch.appendValue(column, m_neededBytes[column], m_line)) {
        m_line.append(kNull);
        return;
    }
    if (m_layout.controlCharacters != ControlCharacters::Keep)
        replaceControlCharacters(m_line, start, m_layout.controlCharacters);
    shapeValue(m_line, start, format);
}

// Writes the line, wrapped at the line width.
void ResultPrinter::writeLine(std::string_view line) {
    while (m_lineWidth != 0) {
        const std::string_view part = utf8Prefix(line, m_lineWidth);
        if (part.size() == line.size()) break;
        m_output.writeLine(part);
        line.remove_prefix(part.size());
    }
    m_output.writeLine(line);
}

}  // namespace sqlcmd
