// Tables of any length on standard output, written page by page.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "console/JsonOutput.h"

enum class Shade { kNone, kGood, kBad, kActive, kUnusual, kHeading };

struct Column {
    const char* title;
    bool flexible = false;  // may be truncated on a narrow terminal
};

struct Cell {
    std::string text;
    Shade shade = Shade::kNone;
};
using Cells = std::vector<Cell>;

// A table. On a terminal its columns are aligned under a heading, with widths taken from the first page; a
// table that does not fit the width is written vertically, one line per value. Elsewhere each row is one line
// of values separated by tabs, without a heading. Control characters become blanks.
class Listing {
  public:
    explicit Listing(std::vector<Column> columns);
    void writePage(const std::vector<Cells>& page);

  private:
    void chooseLayout(const std::vector<Cells>& page);
    void writeHeading() const;
    void writeAligned(const Cells& row) const;
    void writeVertical(const Cells& row) const;
    std::string coloured(const Cell& cell, const std::string& text) const;

    std::vector<Column> m_columns;
    std::vector<std::size_t> m_widths;
    bool m_terminal;
    bool m_ansi;
    bool m_layoutChosen = false;
    bool m_vertical = false;
};

// One JSON array over all pages, one element per line. On a terminal, control characters become blanks.
class JsonListing {
  public:
    void write(const Json& element);
    void end();

  private:
    bool m_empty = true;
};
