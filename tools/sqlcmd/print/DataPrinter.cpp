#include "print/DataPrinter.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <utility>

#include "text/Text.h"

namespace sqlcmd {
namespace {

std::string jsonString(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            result.append({'\\', c});
        else if (byte < 0x20)
            result.append("\\u00").append({kDigits[byte >> 4], kDigits[byte & 15]});
        else
            result += c;
    }
    return result += '"';
}

bool isNumeric(int odbcType) {
    switch (odbcType) {
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT:
        case SQL_REAL:
        case SQL_FLOAT:
        case SQL_DOUBLE:
        case SQL_DECIMAL:
        case SQL_NUMERIC:
            return true;
        default:
            return false;
    }
}

bool isJsonNumber(std::string_view text) {
    return !text.empty() && isDigit(text[text[0] == '-' && text.size() > 1 ? 1 : 0]) &&
           text.find_first_not_of("0123456789+-.eE") == std::string_view::npos;
}

}  // namespace

void DataPrinter::print(RunningBatch& batch, std::string* lastValue, RowQueue& queue, Progress& progress) {
    prepareColumns(batch.columns());
    const std::vector<std::size_t> neededBytes(batch.columns().size(), RunningBatch::kWholeValue);
    beginResult();
    bool isFirst = true;
    {
        const RowQueue::Result result(queue, [&](std::string_view rows) {
            while (!rows.empty()) printRow(batch, rows, lastValue, std::exchange(isFirst, false));
        });
        while (batch.nextRow()) {
            batch.appendRow(neededBytes, queue.rows());
            queue.endRow();
            progress.addRow();
        }
        queue.drain();
    }
    endResult();
}

void DataPrinter::finish() {
    if (m_format != Format::Json) return;
    m_output.write(m_hasResults ? "\n]\n" : "[]\n");
    m_hasResults = false;
}

// JSON needs a different name for each column: an unnamed one is called column and its number, a repeated
// name gets its number.
void DataPrinter::prepareColumns(const std::vector<ColumnInfo>& columns) {
    m_names.clear();
    m_formats.clear();
    std::vector<std::string> plain;
    for (const ColumnInfo& column : columns) {
        m_formats.push_back(exactFormatOf(column));
        const std::string number = std::to_string(plain.size() + 1);
        std::string name = column.name;
        if (m_format != Format::Csv) {
            if (name.empty()) name = "column" + number;
            while (std::find(plain.begin(), plain.end(), name) != plain.end()) name += "_" + number;
        }
        plain.push_back(name);
        m_names.push_back(m_format == Format::Csv ? name : jsonString(name) + ":");
    }
}

void DataPrinter::beginResult() {
    const bool isFollowing = std::exchange(m_hasResults, true);
    if (m_format == Format::Json) m_output.write(isFollowing ? ",\n[" : "[\n[");
    if (m_format != Format::Csv) return;
    if (isFollowing) m_output.write("\n");
    if (!m_hasHeading) return;
    m_line.clear();
    for (const std::string& name : m_names) {
        if (&name != &m_names.front()) m_line += m_separator;
        m_value = name;
        appendValue({}, /*isNull=*/name.empty());
    }
    m_output.write(m_line += '\n');
}

void DataPrinter::endResult() {
    if (m_format == Format::Json) m_output.write("]");
}

// Prints the first of the rows and removes it.
void DataPrinter::printRow(const RunningBatch& batch, std::string_view& rows, std::string* lastValue,
                           bool isFirst) {
    const std::vector<ColumnInfo>& columns = batch.columns();
    m_line.clear();
    if (m_format == Format::Json) m_line = isFirst ? "\n" : ",\n";
    if (m_format != Format::Csv) m_line += '{';
    for (std::size_t i = 0; i < columns.size(); ++i) {
        m_value.clear();
        const auto cell = takeCell(rows);
        const bool isNull = !cell.has_value();
        if (cell) {
            batch.appendValue(i, *cell, m_value);
            shapeValue(m_value, 0, m_formats[i]);
        }
        if (i == 0 && lastValue != nullptr) *lastValue = isNull ? "NULL" : m_value;
        if (i > 0) m_line += m_format == Format::Csv ? std::string_view(m_separator) : ",";
        if (m_format != Format::Csv) m_line += m_names[i];
        appendValue(columns[i], isNull);
    }
    if (m_format != Format::Csv) m_line += '}';
    if (m_format != Format::Json) m_line += '\n';
    m_output.write(m_line);
}

// Appends m_value in the notation of the format.
void DataPrinter::appendValue(const ColumnInfo& column, bool isNull) {
    if (m_format == Format::Csv) {
        const bool isQuoted = m_value.empty() || m_value.find_first_of("\"\r\n") != std::string::npos ||
                              m_value.find(m_separator) != std::string::npos;
        if (isNull) return;
        if (!isQuoted) {
            m_line += m_value;
            return;
        }
        m_line += '"';
        for (const char c : m_value) m_line.append(c == '"' ? 2 : 1, c);
        m_line += '"';
    } else if (isNull) {
        m_line += "null";
    } else if (column.odbcType == SQL_BIT) {
        m_line += m_value == "0" ? "false" : "true";
    } else if (isNumeric(column.odbcType) && isJsonNumber(m_value)) {
        m_line += m_value;
    } else {
        m_line += jsonString(m_value);
    }
}

}  // namespace sqlcmd
