// Prints results for other programs: CSV (RFC 4180), JSON (RFC 8259) or a JSON object a line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "print/Progress.h"
#include "text/Output.h"
#include "values/ColumnFormat.h"

namespace sqlcmd {

// Values are whole and exact: numbers have all their digits, binary values are hexadecimal, NULL differs from
// the empty string. A result is printed while it arrives.
//   CSV: the column names, then the rows; a blank line between results. NULL is empty, an empty string is "".
//   JSON: one array of results; a result is an array of objects.
class DataPrinter {
  public:
    // The output must outlive the printer.
    DataPrinter(Format format, const Layout& layout, Output& output)
        : m_format(format),
          m_separator(layout.separator),
          m_hasHeading(layout.rowsPerHeading >= 0),
          m_output(output) {}

    // Prints all rows of the batch's current result. `lastValue`, if not null, receives the first column of
    // the last row.
    void print(RunningBatch& batch, std::string* lastValue, Progress& progress);

    // Completes the JSON document.
    void finish();

  private:
    void prepareColumns(const std::vector<ColumnInfo>& columns);
    void beginResult();
    void endResult();
    void printRow(RunningBatch& batch, std::string* lastValue, bool isFirst);
    void appendValue(const ColumnInfo& column, bool isNull);
    void appendCsv(std::string_view value);

    Format m_format;
    std::string m_separator;  // of CSV
    bool m_hasHeading;        // of CSV; false with -h -1
    Output& m_output;
    bool m_hasResults = false;
    std::vector<std::string> m_names;  // as they are printed before values
    std::vector<ColumnFormat> m_formats;
    // Reused by every row to save allocations.
    TextBuffer m_line;
    TextBuffer m_value;
};

}  // namespace sqlcmd
