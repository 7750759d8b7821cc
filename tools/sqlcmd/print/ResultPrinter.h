// Prints one result set, row by row.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "print/Progress.h"
#include "text/Output.h"
#include "values/ColumnFormat.h"

namespace sqlcmd {

// Settings of a single batch.
struct ResultMode {
    bool xml = false;                  // :XML ON: prints the first column only, unformatted
    std::string* lastValue = nullptr;  // receives the first column of the last row; may be null
    bool isInternal = false;           // a batch of the tool's own: no statistics and no progress
};

class ResultPrinter {
  public:
    // Prints the batch's current result. The arguments must outlive the printer.
    ResultPrinter(RunningBatch& batch, const Layout& layout, const ResultMode& mode, Output& output);

    std::size_t width() const;  // of a line, in characters, if no value is shorter than its column

    // Prints all rows.
    void print(Progress& progress);

  private:
    void printHeading();
    void printRow();
    bool isHeadingDue(long long row) const;
    void appendValue(std::size_t column);
    void writeLine(std::string_view line);

    RunningBatch& m_batch;
    const Layout& m_layout;
    ResultMode m_mode;
    Output& m_output;
    std::size_t m_lineWidth = 0;  // 0: lines are not wrapped
    std::vector<ColumnFormat> m_formats;
    std::vector<std::size_t> m_neededBytes;  // of each column's values
    long long m_row = 0;                     // number of the next row
    TextBuffer m_line;                       // reused by every row to save allocations
};

}  // namespace sqlcmd
