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

void DataPrinter::print(RunningBatch& batch, std::string* lastValue, Progress& progress) {
    prepareColumns(batch.columns());
    beginResult();
    bool isFirst = true;
    while (batch.nextRow()) {
        progress.addRow();
        printRow(batch, lastValue, std::exchange(isFirst, false));
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
        if (&name != &m_names.front()) m_line.append(m_separator);
        m_value.clear();
        m_value.append(name);
        appendValue({}, /*isNull=*/name.empty());
    }
    m_line.append('\n');
    m_output.write(m_line.view());
}

void DataPrinter::endResult() {
    if (m_format == Format::Json) m_output.write("]");
}

void DataPrinter::printRow(RunningBatch& batch, std::string* lastValue, bool isFirst) {
    const std::vector<ColumnInfo>& columns = batch.columns();
    m_line.clear();
    if (m_format == Format::Json) m_line.append(isFirst ? "\n" : ",\n");
    if (m_format != Format::Csv) m_line.append('{');
    for (std::size_t i = 0; i < columns.size(); ++i) {
        m_value.clear();
        const bool isNull = !batch.appendValue(i, RunningBatch::kWholeValue, m_value);
        if (!isNull) shapeValue(m_value, 0, m_formats[i]);
        if (i == 0 && lastValue != nullptr) *lastValue = isNull ? "NULL" : m_value.view();
        if (i > 0) m_line.append(m_format == Format::Csv ? std::string_view(m_separator) : ",");
        if (m_format != Format::Csv) m_line.append(m_names[i]);
        appendValue(columns[i], isNull);
    }
    if (m_format != Format::Csv) m_line.append('}');
    if (m_format != Format::Json) m_line.append('\n');
    m_output.write(m_line.view());
}

// Appends m_value in the notation of the format.
void DataPrinter::appendValue(const ColumnInfo& column, bool isNull) {
    const std::string_view value = m_value.view();
    if (m_format == Format::Csv) {
        if (!isNull) appendCsv(value);
    } else if (isNull) {
        m_line.append("null");
    } else if (column.odbcType == SQL_BIT) {
        m_line.append(value == "0" ? "false" : "true");
    } else if (isNumeric(column.odbcType) && isJsonNumber(value)) {
        m_line.append(value);
    } else {
        m_line.append(jsonString(value));
    }
}

void DataPrinter::appendCsv(std::string_view value) {
    const bool isQuoted = value.empty() || value.find_first_of("\"\r\n") != std::string_view::npos ||
                          value.find(m_separator) != std::string_view::npos;
    if (!isQuoted) return m_line.append(value);
    m_line.append('"');
    for (const char c : value) m_line.append(c == '"' ? "\"\"" : std::string_view(&c, 1));
    m_line.append('"');
}

}  // namespace sqlcmd
