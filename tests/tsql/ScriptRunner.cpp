#include "ScriptRunner.h"

#include <cctype>
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
        m_text += line + "\n";
    }
    void row(std::span<const CellView> cells) override {
        for (std::size_t i = 0; i < cells.size(); ++i)
            m_text += (i ? " | " : "") + (isExact(m_types[i].id) && !isNull(cells[i])
                                              ? scaledText(exactOf(cells[i]), m_types[i].scale)
                                              : std::visit(CellText(), cells[i]));
        m_text += "\n";
    }
    void statementDone(std::int64_t rowCount, bool isSelect) override {
        if (rowCount >= 0) m_text += "(" + std::to_string(rowCount) + (isSelect ? " rows)\n" : " changed)\n");
    }
    void message(const Message& message) override {
        if (message.number != 0 && (message.number != 50000 || message.severity > 10))
            m_text += "Msg " + std::to_string(message.number) + ", Level " +
                      std::to_string(message.severity) + ", State " + std::to_string(message.state) +
                      ", Line " + std::to_string(message.line) +
                      (message.procedure.empty() ? "" : ", Procedure " + message.procedure) + ": ";
        m_text += message.text + "\n";
    }
    void databaseChanged(std::string_view, std::string_view to) override {
        m_text += "USE " + std::string(to) + "\n";
    }
    bool cancelled() override { return false; }

    std::string take() { return std::move(m_text); }

  private:
    std::string m_text;
    std::vector<SqlType> m_types;
};

bool isGo(std::string_view line) {
    return line == "GO" || line == "go";
}

}  // namespace

std::string runScript(Session& session, std::string_view text) {
    PrintingSink sink;
    std::string output, batch;
    const auto flush = [&] {
        if (batch.find_first_not_of(" \n") == std::string::npos) return;
        const bool goesOn = session.runBatch(batch, sink);
        output += sink.take() + (goesOn ? "GO\n" : "THE SESSION HAS ENDED\n");
        batch.clear();
    };
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (isGo(line))
            flush();
        else
            batch.append(line) += '\n';
    }
    flush();
    return output;
}

}  // namespace tsql::test
