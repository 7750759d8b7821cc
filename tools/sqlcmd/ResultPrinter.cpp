#include "ResultPrinter.h"

#include <algorithm>

#include "Text.h"
#include "Utf.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kPieceSize = 65536;
constexpr std::size_t kBytesPerCharacter = 4;  // of UTF-8, at most
constexpr std::size_t kShortestBuffer = 64;
constexpr std::string_view kNull = "NULL";

// Of a piece that is not the last one. It ends with a NUL, a few bytes before the buffer's end where a driver
// does not divide a character.
std::size_t filledLength(const std::vector<char>& piece) {
    return static_cast<std::size_t>(std::find(piece.end() - kBytesPerCharacter, piece.end(), '\0') -
                                    piece.begin());
}

}  // namespace

ResultPrinter::ResultPrinter(Statement& statement, const Layout& layout, const ResultMode& mode,
                             Output& output, MessagePrinter& messages)
    : m_statement(statement),
      m_layout(layout),
      m_mode(mode),
      m_output(output),
      m_messages(messages),
      m_piece(kPieceSize) {
    bool bindable = !mode.xml;
    const int count = statement.columnCount();
    for (int number = 1; number <= count; ++number) {
        auto cell = std::make_unique<Cell>();
        cell->format = formatOf(describe(static_cast<SQLUSMALLINT>(number)), layout);
        bindable = bindable && !cell->format.isLong;
        if (bindable) bind(static_cast<SQLUSMALLINT>(number), *cell);
        m_cells.push_back(std::move(cell));
    }
}

// The next result set is not to be fetched into these buffers.
ResultPrinter::~ResultPrinter() {
    m_statement.functions().freeStmt(m_statement.handle(), SQL_UNBIND);
}

ColumnInfo ResultPrinter::describe(SQLUSMALLINT number) const {
    const DriverFunctions& functions = m_statement.functions();
    char name[1024] = {};
    char typeName[256] = {};
    SQLSMALLINT length = 0, type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    functions.describeCol(m_statement.handle(), number, reinterpret_cast<SQLCHAR*>(name), sizeof name - 1,
                          &length, &type, &size, &digits, &nullable);
    functions.colAttribute(m_statement.handle(), number, SQL_DESC_TYPE_NAME, typeName, sizeof typeName - 1,
                           &length, nullptr);
    return {name, lowerCase(std::string_view(typeName)), type, size};
}

void ResultPrinter::bind(SQLUSMALLINT number, Cell& cell) {
    cell.buffer.resize(std::max(cell.format.width * kBytesPerCharacter, kShortestBuffer) + 1);
    m_statement.functions().bindCol(m_statement.handle(), number, SQL_C_CHAR, cell.buffer.data(),
                                    static_cast<SQLLEN>(cell.buffer.size()), &cell.length);
}

SQLRETURN ResultPrinter::print() {
    if (isHeadingDue(0)) printHeading();
    SQLRETURN code;
    for (long long row = 0; SQL_SUCCEEDED(code = m_statement.fetch()); ++row) {
        if (code == SQL_SUCCESS_WITH_INFO) m_messages.print(m_statement.diagnostics());
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
    return code;
}

bool ResultPrinter::isHeadingDue(long long row) const {
    if (m_mode.xml || !m_layout.withHeading || m_layout.rowsPerHeading < 0) return false;
    return row == 0 || (m_layout.rowsPerHeading > 0 && row % m_layout.rowsPerHeading == 0);
}

void ResultPrinter::printHeading() {
    std::string dashes;
    for (const auto& cell : m_cells) {
        const ColumnFormat& format = cell->format;
        const std::size_t nameLength = utf8Length(format.name);
        const std::size_t width = m_layout.trimBlanks ? std::max<std::size_t>(nameLength, 1) : format.width;
        if (cell != m_cells.front()) {
            m_line += m_layout.separator;
            dashes += m_layout.separator;
        }
        appendPadded(m_line, format.name, m_layout.trimBlanks ? 0 : width, false);
        dashes.append(std::max<std::size_t>(width, 1), '-');
    }
    endLine();
    m_line = dashes;
    endLine();
}

void ResultPrinter::printRow() {
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        Cell& cell = *m_cells[i];
        readValue(static_cast<SQLUSMALLINT>(i + 1), cell, m_value);
        if (i == 0 && m_mode.lastValue != nullptr) *m_mode.lastValue = m_value;
        if (i > 0) m_line += m_layout.separator;
        appendCell(cell.format);
    }
    endLine();
}

void ResultPrinter::printXmlRow() {
    m_value.clear();
    if (readPieces(1, m_value, 0) == SQL_SUCCESS) m_output.write(m_value);
}

// The value as it is shown, in m_value; `NULL` for what is null.
void ResultPrinter::readValue(SQLUSMALLINT number, Cell& cell, std::string& text) {
    text.clear();
    if (cell.buffer.empty()) {
        cell.length = 0;
        const std::size_t enough = cell.format.limit * kBytesPerCharacter;
        if (readPieces(number, text, enough) == SQL_NO_DATA) cell.length = SQL_NULL_DATA;
    } else if (cell.length != SQL_NULL_DATA) {
        const std::size_t room = cell.buffer.size() - 1;  // the length may also be unknown: SQL_NO_TOTAL
        text.assign(cell.buffer.data(),
                    cell.length < 0 ? room : std::min(static_cast<std::size_t>(cell.length), room));
    }
    if (cell.length == SQL_NULL_DATA)
        text = kNull;
    else
        shapeValue(text, cell.format);
}

// Reads a value piece by piece; beyond `enough` bytes (0: all) the rest is left. SQL_NO_DATA for a null.
SQLRETURN ResultPrinter::readPieces(SQLUSMALLINT number, std::string& text, std::size_t enough) {
    for (;;) {
        std::fill(m_piece.end() - kBytesPerCharacter, m_piece.end(), '\xFF');
        SQLLEN length = 0;
        const SQLRETURN code =
            m_statement.functions().getData(m_statement.handle(), number, SQL_C_CHAR, m_piece.data(),
                                            static_cast<SQLLEN>(m_piece.size()), &length);
        if (!SQL_SUCCEEDED(code)) return SQL_ERROR;
        if (length == SQL_NULL_DATA) return SQL_NO_DATA;
        const bool complete = code == SQL_SUCCESS;
        text.append(m_piece.data(), complete ? static_cast<std::size_t>(length) : filledLength(m_piece));
        if (complete || (enough != 0 && text.size() >= enough)) return SQL_SUCCESS;
    }
}

void ResultPrinter::appendCell(const ColumnFormat& format) {
    if (m_layout.trimBlanks)
        m_line += std::string_view(m_value).substr(0, m_value.find_last_not_of(' ') + 1);
    else
        appendPadded(m_line, m_value, format.width, format.rightAligned);
}

void ResultPrinter::endLine() {
    const auto width = static_cast<std::size_t>(m_layout.lineWidth);
    std::string_view rest = m_line;
    for (std::string_view part; width != 0 && (part = utf8Prefix(rest, width)).size() < rest.size();) {
        m_output.write(part);
        m_output.write("\n");
        rest.remove_prefix(part.size());
    }
    m_output.write(rest);
    m_output.write("\n");
    m_line.clear();
}

}  // namespace sqlcmd
