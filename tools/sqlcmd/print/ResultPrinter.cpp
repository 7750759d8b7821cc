#include "print/ResultPrinter.h"

#include <algorithm>

#include "text/Utf.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kBytesPerCharacter = 4;  // of UTF-8, at most
constexpr std::string_view kNull = "NULL";

}  // namespace

ResultPrinter::ResultPrinter(RunningBatch& batch, const Layout& layout, const ResultMode& mode,
                             Output& output)
    : m_batch(batch), m_layout(layout), m_mode(mode), m_output(output) {
    for (const ColumnInfo& column : batch.columns()) m_formats.push_back(formatOf(column, layout));
}

void ResultPrinter::print(Progress& progress) {
    if (isHeadingDue(0)) printHeading();
    for (long long row = 0; m_batch.nextRow(); ++row) {
        progress.addRow();
        if (m_mode.xml) {
            printXmlRow();
            continue;
        }
        if (row > 0 && isHeadingDue(row)) {
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
    std::string names;
    std::string dashes;
    for (const ColumnFormat& format : m_formats) {
        const std::size_t nameLength = utf8Length(format.name);
        const std::size_t width = m_layout.trimBlanks ? std::max<std::size_t>(nameLength, 1) : format.width;
        if (&format != &m_formats.front()) {
            names += m_layout.separator;
            dashes += m_layout.separator;
        }
        appendPadded(names, format.name, m_layout.trimBlanks ? 0 : width, /*rightAligned=*/false);
        dashes.append(std::max<std::size_t>(width, 1), '-');
    }
    writeLine(names);
    writeLine(dashes);
}

void ResultPrinter::printRow() {
    m_line.clear();
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        readValue(i, m_value);
        if (i == 0 && m_mode.lastValue != nullptr) *m_mode.lastValue = m_value;
        if (i > 0) m_line += m_layout.separator;
        appendValue(m_line, m_value, m_formats[i]);
    }
    writeLine(m_line);
}

void ResultPrinter::printXmlRow() {
    m_value.clear();
    if (m_batch.appendValue(0, RunningBatch::kWholeValue, m_value)) m_output.write(m_value);
}

// Sets `text` to the printed form of the value.
void ResultPrinter::readValue(std::size_t column, std::string& text) {
    const ColumnFormat& format = m_formats[column];
    text.clear();
    if (!m_batch.appendValue(column, format.limit * kBytesPerCharacter, text)) {
        text = kNull;
        return;
    }
    if (m_layout.controlCharacters != ControlCharacters::Keep)
        replaceControlCharacters(text, m_layout.controlCharacters);
    shapeValue(text, format);
}

void ResultPrinter::appendValue(std::string& line, std::string_view value, const ColumnFormat& format) const {
    if (m_layout.trimBlanks)
        line += value.substr(0, value.find_last_not_of(' ') + 1);
    else
        appendPadded(line, value, format);
}

// Writes the line, wrapped at the line width.
void ResultPrinter::writeLine(std::string_view line) {
    const auto width = static_cast<std::size_t>(m_layout.lineWidth);
    while (width != 0) {
        const std::string_view part = utf8Prefix(line, width);
        if (part.size() == line.size()) break;
        m_output.write(part);
        m_output.write("\n");
        line.remove_prefix(part.size());
    }
    m_output.write(line);
    m_output.write("\n");
}

}  // namespace sqlcmd
