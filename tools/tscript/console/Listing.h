// Rows for people and for programs, written as they come: a page at a time, whatever the number of pages.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "console/JsonOutput.h"

enum class Shade { kNone, kGood, kBad, kActive, kOdd };

struct Column {
    const char* title;
    bool flexible = false;  // cut first where a terminal is too narrow
};

struct Cell {
    std::string text;
    Shade shade = Shade::kNone;
};
using Cells = std::vector<Cell>;

// On a terminal an aligned table under a heading, its widths settled by the first page; where it would not
// fit, a line for each value instead. Elsewhere one row a line, its columns kept apart by tabs, without a
// heading. Control characters become blanks everywhere.
class Listing {
  public:
    explicit Listing(std::vector<Column> columns);
    void writePage(const std::vector<Cells>& page);

  private:
    void settle(const std::vector<Cells>& page);
    void writeHeading() const;
    void writeAligned(const Cells& row, bool heading = false) const;
    void writeUpright(const Cells& row) const;
    std::string painted(const Cell& cell, const std::string& text) const;

    std::vector<Column> m_columns;
    std::vector<std::size_t> m_widths;
    bool m_terminal;
    bool m_lively;
    bool m_settled = false;
    bool m_upright = false;
};

// One JSON array over all pages, an element a line.
class JsonListing {
  public:
    void write(const Json& element);
    void end();

  private:
    bool m_empty = true;
};
