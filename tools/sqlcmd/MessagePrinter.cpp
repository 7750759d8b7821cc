#include "MessagePrinter.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace sqlcmd {
namespace {

constexpr int kShowAll = -1;  // -m: every message has its heading

// PRINT texts and the server's plain information.
bool isPlainText(int severity) {
    return severity == 0 || severity == 10;
}

}  // namespace

std::string messageHeading(const Diagnostic& diagnostic) {
    std::string text = "Msg " + std::to_string(diagnostic.number) + ", Level " +
                       std::to_string(diagnostic.severity) + ", State " + std::to_string(diagnostic.state) +
                       ", Server " + diagnostic.server;
    if (!diagnostic.procedure.empty()) text += ", Procedure " + diagnostic.procedure;
    return text + ", Line " + std::to_string(diagnostic.line);
}

void MessagePrinter::print(const std::vector<Diagnostic>& diagnostics) {
    for (const Diagnostic& diagnostic : diagnostics) {
        m_highestSeverity = std::max(m_highestSeverity, diagnostic.severity);
        if (diagnostic.fromServer)
            print(diagnostic);
        else if (diagnostic.isError())
            printOwn(diagnostic);
    }
}

void MessagePrinter::printLoginError(const std::vector<Diagnostic>& diagnostics) {
    for (const Diagnostic& diagnostic : diagnostics) printOwn(diagnostic);
}

int MessagePrinter::takeHighestSeverity() {
    return std::exchange(m_highestSeverity, 0);
}

void MessagePrinter::print(const Diagnostic& diagnostic) {
    if (diagnostic.severity < m_options.messageLevel) return;
    const bool withHeading = m_options.messageLevel == kShowAll || !isPlainText(diagnostic.severity);
    const bool toErrorStream = m_options.errorStream == ErrorStream::All ||
                               (m_options.errorStream == ErrorStream::Errors && diagnostic.isError());
    write((withHeading ? messageHeading(diagnostic) + "\n" : "") + diagnostic.text + "\n", toErrorStream);
}

// An error of the driver or the tool: always on standard error, and in the output file as well, where whoever
// reads the results finds why they end.
void MessagePrinter::printOwn(const Diagnostic& diagnostic) {
    const std::string text = "Sqlcmd: Error: " + diagnostic.driver + " : " + diagnostic.text + ".\n";
    if (m_output.isFile()) m_output.write(text);
    m_output.flush();
    std::fputs(text.c_str(), stderr);
}

void MessagePrinter::write(std::string_view text, bool toErrorStream) {
    if (!toErrorStream || m_output.isFile()) return m_output.write(text);
    m_output.flush();
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace sqlcmd
