// Prints one result set, row by row.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ColumnFormat.h"
#include "Connection.h"
#include "MessagePrinter.h"
#include "Output.h"

namespace sqlcmd {

// Settings of a single result set.
struct ResultMode {
    bool xml = false;                  // :XML ON: prints the first column only, unformatted
    std::string* lastValue = nullptr;  // receives the first column of the last row; may be null
};

class ResultPrinter {
  public:
    // Binds the columns of the statement's current result. The arguments must outlive the printer.
    ResultPrinter(Statement& statement, const Layout& layout, const ResultMode& mode, Output& output,
                  MessagePrinter& messages);
    ~ResultPrinter();
    ResultPrinter(const ResultPrinter&) = delete;
    ResultPrinter& operator=(const ResultPrinter&) = delete;

    // Prints all rows. Returns the code of the last fetch: SQL_NO_DATA, or an error.
    SQLRETURN print();

  private:
    // A column's value in the current row. The columns before the first long one are bound: a fetch fills
    // their buffers. The others are not, because ODBC drivers return values in pieces only for columns after
    // the last bound one, in ascending order.
    struct Cell {
        ColumnFormat format;
        std::vector<char> buffer;  // empty: read in pieces
        SQLLEN length = 0;         // bytes, or SQL_NULL_DATA
    };

    ColumnInfo describe(SQLUSMALLINT number) const;
    void bind(SQLUSMALLINT number, Cell& cell);
    void printHeading();
    void printRow();
    bool isHeadingDue(long long row) const;
    void printXmlRow();
    void readValue(SQLUSMALLINT number, Cell& cell, std::string& text);
    SQLRETURN readPieces(SQLUSMALLINT number, std::string& text, std::size_t enough);
    void appendValue(std::string& line, std::string_view value, const ColumnFormat& format) const;
    void writeLine(std::string_view line);

    Statement& m_statement;
    const Layout& m_layout;
    ResultMode m_mode;
    Output& m_output;
    MessagePrinter& m_messages;
    std::vector<std::unique_ptr<Cell>> m_cells;
    // Reused by every row to save allocations.
    std::vector<char> m_piece;
    std::string m_line;
    std::string m_value;
};

}  // namespace sqlcmd
