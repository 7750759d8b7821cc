#include "ScriptRunner.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "types/Values.h"

namespace tsql::test {
namespace {

struct CellText {
    std::string operator()(Null) const { return "NULL"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
        char text[64];
        return {text, std::to_chars(text, text + sizeof text, number).ptr};
    }
    std::string operator()(std::string_view text) const { return std::string(text); }
    std::string operator()(Blob bytes) const {
        constexpr char kDigits[] = "0123456789ABCDEF";
        std::string text = "0x";
        for (const auto byte : bytes) {
            text += kDigits[std::to_integer<unsigned>(byte) >> 4U];
            text += kDigits[std::to_integer<unsigned>(byte) & 0xFU];
        }
        return text;
    }
};

// A message that only adds to the line before it.
struct Note {
    int number, severity, state;
    std::string_view text;
};
constexpr Note kNotes[] = {
    {1750, 16, 1, "Could not create constraint or index. See previous errors."},
    {2528, 0, 1,
     "DBCC execution completed. If DBCC printed error messages, contact your system administrator."},
    {3621, 0, 0, "The statement has been terminated."},
    {8153, 0, 1, "Warning: Null value is eliminated by an aggregate or other SET operation."},
    {15477, 0, 1, "Caution: Changing any part of an object name could break scripts and stored procedures."},
};

bool isNote(const Message& message) {
    return std::ranges::any_of(kNotes, [&](const Note& note) {
        return message.number == note.number && message.severity == note.severity &&
               message.state == note.state && message.text == note.text;
    });
}

// Bytes of a line that holds several lines of output, or the heading and the rows of a result set.
constexpr std::size_t kFullLine = 200;

class PrintingSink final : public ResultSink {
  public:
    void columns(std::span<const Column> columns) override {
        printRows();
        m_columns.assign(columns.begin(), columns.end());
        m_hasRows = true;
    }
    void row(std::span<const CellView> cells) override {
        auto& row = m_rows.emplace_back();
        for (std::size_t i = 0; i < cells.size(); ++i)
            row.push_back(isExact(m_columns[i].type.id) && !isNull(cells[i])
                              ? scaledText(exactOf(cells[i]), m_columns[i].type.scale)
                              : std::visit(CellText(), cells[i]));
    }
    void statementDone(std::int64_t rowCount, StatementKind kind) override {
        printRows();
        const bool hasRows = std::exchange(m_hasRows, false);
        const bool assigns = kind == StatementKind::Select && !hasRows;
        if (rowCount < 0 || assigns) return;
        appendToLine("(" + std::to_string(rowCount) + (hasRows ? " rows)" : " changed)"));
    }
    void message(const Message& message) override {
        printRows();
        const std::string origin = ", Line " + std::to_string(message.line) +
                                   (message.procedure.empty() ? "" : ", Procedure " + message.procedure);
        const std::string number = std::to_string(message.number);
        if (isNote(message)) return appendToLine("(" + number + (origin == m_lastOrigin ? "" : origin) + ")");
        m_lastOrigin = origin;
        if (message.number == 0 || (message.number == 50000 && message.severity <= 10))
            m_lines.push_back(message.text);
        else
            m_lines.push_back("Msg " + number + ", Level " + std::to_string(message.severity) + ", State " +
                              std::to_string(message.state) + origin + ": " + message.text);
    }
    void databaseChanged(std::string_view, std::string_view to) override {
        printRows();
        m_lines.push_back("USE " + std::string(to));
    }
    bool cancelled() override { return false; }

    std::string text() {
        printRows();
        std::string text;
        for (const std::string& line : m_lines) text += line + '\n';
        return text;
    }

  private:
    static std::string describe(const Column& column) {
        return (column.name.empty() ? "-" : column.name) + " " + displayName(column.type) +
               (column.identity ? "*" : "") + (column.nullable ? "?" : "");
    }
    void printRows() {
        if (m_columns.empty()) return;
        std::vector<std::string> heading;
        for (const Column& column : m_columns) heading.push_back(describe(column));
        std::vector<std::string> rows;
        for (const auto& row : m_rows) rows.push_back(joined(row, " | "));
        const std::string onOneLine = joined(heading, " | ") + " = " + joined(rows, "; ");
        if (rows.size() == 1) {
            for (std::size_t i = 0; i < heading.size(); ++i) heading[i] += " = " + m_rows.front()[i];
            m_lines.push_back(joined(heading, " | "));
        } else if (rows.size() > 1 && onOneLine.size() <= kFullLine) {
            m_lines.push_back(onOneLine);
        } else {
            m_lines.push_back(joined(heading, " | "));
            m_lines.insert(m_lines.end(), rows.begin(), rows.end());
        }
        m_columns.clear();
        m_rows.clear();
    }
    static std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
        std::string line;
        for (const std::string& part : parts) line += (&part == &parts.front() ? "" : separator) + part;
        return line;
    }
    void appendToLine(const std::string& note) {
        if (m_lines.empty())
            m_lines.push_back(note);
        else
            m_lines.back() += " " + note;
    }

    std::vector<Column> m_columns;
    bool m_hasRows = false;  // the current statement has returned a result set
    std::vector<std::vector<std::string>> m_rows;
    std::vector<std::string> m_lines;
    std::string m_lastOrigin;
};

constexpr std::string_view kOutputMark = "-->";
constexpr std::string_view kOutputOnLine = " -->";

std::string_view cutLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// The output in lines that each begin with a mark. Short ones share a line.
std::string markedLines(std::string_view output) {
    std::string lines(kOutputMark);
    std::size_t lineStart = 0;
    bool isFirst = true;
    while (!output.empty()) {
        const std::string_view line = cutLine(output);
        if (!isFirst) {
            const bool fits = lines.size() - lineStart + kOutputOnLine.size() + line.size() < kFullLine;
            if (!fits) lineStart = lines.size() + 1;
            lines.append(fits ? " " : "\n").append(kOutputMark);
        }
        lines.append(" ").append(line);
        isFirst = false;
    }
    return lines + '\n';
}

// A single line of output goes to the end of the batch's last line.
std::string withOutput(std::string batch, std::string_view output) {
    const std::string lines = markedLines(output);
    if (lines.find('\n') + 1 == lines.size()) batch.back() = ' ';
    return batch + lines;
}

}  // namespace

std::string runBatch(Session& session, std::string_view batch) {
    PrintingSink sink;
    const bool sessionContinues = session.runBatch(batch, sink);
    return sink.text() + (sessionContinues ? "" : "THE SESSION HAS ENDED\n");
}

std::string runScript(Session& session, std::string_view script) {
    std::string result;
    for (const std::string& batch : batchesOf(script)) result += withOutput(batch, runBatch(session, batch));
    return result;
}

std::vector<std::string> batchesOf(std::string_view script) {
    std::vector<std::string> batches;
    std::string batch;
    const auto endBatch = [&] {
        if (!batch.empty()) batches.push_back(std::exchange(batch, {}));
    };
    while (!script.empty()) {
        const std::string_view line = cutLine(script);
        const std::size_t output = line.find(kOutputOnLine);
        const bool endsBatch = line == "GO" || line.starts_with(kOutputMark);
        if (!endsBatch) batch.append(line.substr(0, output)) += '\n';
        if (endsBatch || output != std::string_view::npos) endBatch();
    }
    endBatch();
    return batches;
}

}  // namespace tsql::test
