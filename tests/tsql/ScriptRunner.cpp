#include "ScriptRunner.h"

#include <charconv>

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

class PrintingSink final : public ResultSink {
  public:
    void columns(std::span<const Column> columns) override {
        std::string line;
        m_types.clear();
        for (const auto& column : columns) {
            m_types.push_back(column.type);
            line +=
                (line.empty() ? "" : " | ") + (column.name.empty() ? std::string("-") : column.name) + " ";
            line += displayName(column.type) + (column.identity ? "*" : "") + (column.nullable ? "?" : "");
        }
        m_lines.push_back(line);
    }
    void row(std::span<const CellView> cells) override {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i)
            line += (i ? " | " : "") + (isExact(m_types[i].id) && !isNull(cells[i])
                                            ? scaledText(exactOf(cells[i]), m_types[i].scale)
                                            : std::visit(CellText(), cells[i]));
        m_lines.push_back(line);
    }
    void statementDone(std::int64_t rowCount, bool isSelect) override {
        if (rowCount >= 0) appendToLine("(" + std::to_string(rowCount) + (isSelect ? " rows)" : " changed)"));
    }
    void message(const Message& message) override {
        const std::string origin = ", Line " + std::to_string(message.line) +
                                   (message.procedure.empty() ? "" : ", Procedure " + message.procedure);
        if (message.number == 3621 && message.severity == 0 && message.state == 0 && origin == m_lastOrigin &&
            message.text == "The statement has been terminated.")
            return appendToLine("(3621)");
        m_lastOrigin = origin;
        if (message.number == 0 || (message.number == 50000 && message.severity <= 10))
            m_lines.push_back(message.text);
        else
            m_lines.push_back("Msg " + std::to_string(message.number) + ", Level " +
                              std::to_string(message.severity) + ", State " + std::to_string(message.state) +
                              origin + ": " + message.text);
    }
    void databaseChanged(std::string_view, std::string_view to) override {
        m_lines.push_back("USE " + std::string(to));
    }
    bool cancelled() override { return false; }

    std::string text() const {
        std::string text;
        for (const std::string& line : m_lines) text += line + '\n';
        return text;
    }

  private:
    void appendToLine(const std::string& note) {
        if (m_lines.empty())
            m_lines.push_back(note);
        else
            m_lines.back() += " " + note;
    }

    std::vector<std::string> m_lines;
    std::vector<SqlType> m_types;
    std::string m_lastOrigin;
};

constexpr std::string_view kOutputMark = "-->";

bool endsBatch(std::string_view line) {
    return line == "GO" || line.starts_with(kOutputMark);
}

std::string_view cutLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

std::string marked(std::string_view output) {
    if (output.empty()) return "GO\n";
    std::string text;
    while (!output.empty()) text.append(kOutputMark).append(" ").append(cutLine(output)) += '\n';
    return text;
}

}  // namespace

std::string runBatch(Session& session, std::string_view batch) {
    PrintingSink sink;
    const bool sessionContinues = session.runBatch(batch, sink);
    return sink.text() + (sessionContinues ? "" : "THE SESSION HAS ENDED\n");
}

std::string runScript(Session& session, std::string_view script) {
    std::string result, batch;
    const auto runCollected = [&] {
        if (batch.empty()) return;
        result += batch + marked(runBatch(session, batch));
        batch.clear();
    };
    while (!script.empty()) {
        const std::string_view line = cutLine(script);
        if (endsBatch(line))
            runCollected();
        else
            batch.append(line) += '\n';
    }
    runCollected();
    return result;
}

}  // namespace tsql::test
