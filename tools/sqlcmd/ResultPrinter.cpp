#include "ResultPrinter.h"

#include <algorithm>

#include "Text.h"
#include "Utf.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kPieceSize = 65536;      // bytes
constexpr std::size_t kBytesPerCharacter = 4;  // of UTF-8, at most
constexpr std::size_t kShortestBuffer = 64;
constexpr std::size_t kWholeValue = 0;  // no limit for readPieces()
constexpr std::string_view kNull = "NULL";

// Length of a piece that is not the last one. It ends with a NUL, up to three bytes before the end of the
// buffer if the driver does not divide a character. readPieces() has filled these bytes with others before.
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
    bool isBindable = !mode.xml;
    const int count = statement.columnCount();
    for (int number = 1; number <= count; ++number) {
        auto cell = std::make_unique<Cell>();
        cell->format = formatOf(describe(static_cast<SQLUSMALLINT>(number)), layout);
        isBindable = isBindable && !cell->format.isLong;
        if (isBindable) bind(static_cast<SQLUSMALLINT>(number), *cell);
        m_cells.push_back(std::move(cell));
    }
}

// The next result set must not be fetched into freed buffers.
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
    std::string names;
    std::string dashes;
    for (const auto& cell : m_cells) {
        const ColumnFormat& format = cell->format;
        const std::size_t nameLength = utf8Length(format.name);
        const std::size_t width = m_layout.trimBlanks ? std::max<std::size_t>(nameLength, 1) : format.width;
        if (cell != m_cells.front()) {
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
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        Cell& cell = *m_cells[i];
        readValue(static_cast<SQLUSMALLINT>(i + 1), cell, m_value);
        if (i == 0 && m_mode.lastValue != nullptr) *m_mode.lastValue = m_value;
        if (i > 0) m_line += m_layout.separator;
        appendValue(m_line, m_value, cell.format);
    }
    writeLine(m_line);
}

void ResultPrinter::printXmlRow() {
    m_value.clear();
    if (readPieces(1, m_value, kWholeValue) == SQL_SUCCESS) m_output.write(m_value);
}

// Sets `text` to the printed form of the value.
void ResultPrinter::readValue(SQLUSMALLINT number, Cell& cell, std::string& text) {
    text.clear();
    if (cell.buffer.empty()) {
        cell.length = 0;
        const std::size_t enough = cell.format.limit * kBytesPerCharacter;
        if (readPieces(number, text, enough) == SQL_NO_DATA) cell.length = SQL_NULL_DATA;
    } else if (cell.length != SQL_NULL_DATA) {
        const std::size_t capacity = cell.buffer.size() - 1;
        const bool isCut =
            cell.length < 0 || static_cast<std::size_t>(cell.length) > capacity;  // SQL_NO_TOTAL
        text.assign(cell.buffer.data(), isCut ? capacity : static_cast<std::size_t>(cell.length));
    }
    if (cell.length == SQL_NULL_DATA)
        text = kNull;
    else
        shapeValue(text, cell.format);
}

// Appends a value piece by piece until it ends or `text` has `enough` bytes (kWholeValue: until it ends).
// Returns SQL_SUCCESS, SQL_NO_DATA for NULL, or SQL_ERROR.
SQLRETURN ResultPrinter::readPieces(SQLUSMALLINT number, std::string& text, std::size_t enough) {
    for (;;) {
        std::fill(m_piece.end() - kBytesPerCharacter, m_piece.end(), '\xFF');
        SQLLEN length = 0;
        const SQLRETURN code =
            m_statement.functions().getData(m_statement.handle(), number, SQL_C_CHAR, m_piece.data(),
                                            static_cast<SQLLEN>(m_piece.size()), &length);
        if (!SQL_SUCCEEDED(code)) return SQL_ERROR;
        if (length == SQL_NULL_DATA) return SQL_NO_DATA;
        const bool isComplete = code == SQL_SUCCESS;
        text.append(m_piece.data(), isComplete ? static_cast<std::size_t>(length) : filledLength(m_piece));
        if (isComplete || (enough != kWholeValue && text.size() >= enough)) return SQL_SUCCESS;
    }
}

void ResultPrinter::appendValue(std::string& line, std::string_view value, const ColumnFormat& format) const {
    if (m_layout.trimBlanks)
        line += value.substr(0, value.find_last_not_of(' ') + 1);
    else
        appendPadded(line, value, format.width, format.rightAligned);
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
