// One result set on its way from the driver to the output, row by row.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ColumnFormat.h"
#include "Connection.h"
#include "MessagePrinter.h"
#include "Output.h"

namespace sqlcmd {

// What is asked for beyond the layout.
struct ResultMode {
    bool xml = false;                  // :XML ON: the first column's text, unformatted
    std::string* lastValue = nullptr;  // takes the first column of the last row
};

class ResultPrinter {
  public:
    ResultPrinter(Statement& statement, const Layout& layout, const ResultMode& mode, Output& output,
                  MessagePrinter& messages);
    ~ResultPrinter();
    ResultPrinter(const ResultPrinter&) = delete;
    ResultPrinter& operator=(const ResultPrinter&) = delete;

    // Prints all rows. The return code of the fetch that ended them: SQL_NO_DATA, or an error.
    SQLRETURN print();

  private:
    // Bound columns have a buffer that each fetch fills. From the first long column on nothing is bound: a
    // driver hands out pieces only of the columns after the last bound one, in their order.
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
    void appendCell(const ColumnFormat& format);
    void endLine();

    Statement& m_statement;
    const Layout& m_layout;
    ResultMode m_mode;
    Output& m_output;
    MessagePrinter& m_messages;
    std::vector<std::unique_ptr<Cell>> m_cells;
    std::vector<char> m_piece;
    std::string m_line;
    std::string m_value;
};

}  // namespace sqlcmd
