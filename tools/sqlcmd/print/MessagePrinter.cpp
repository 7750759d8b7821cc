#include "print/MessagePrinter.h"

#include <algorithm>
#include <cstdio>

namespace sqlcmd {
namespace {

constexpr int kEndingState = 127;    // RAISERROR with this state ends the tool
constexpr int kAllWithHeading = -1;  // value of -m

// PRINT messages and the server's information, which are printed without a heading.
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

void MessagePrinter::print(const Diagnostic& diagnostic) {
    m_highestSeverity = std::max(m_highestSeverity, diagnostic.severity);
    if (diagnostic.fromServer && diagnostic.state == kEndingState && !m_endingNumber)
        m_endingNumber = diagnostic.number;
    if (diagnostic.fromServer)
        printServerMessage(diagnostic);
    else if (diagnostic.isError())
        printToolError(diagnostic);
}

void MessagePrinter::printLoginError(const std::vector<Diagnostic>& diagnostics) {
    for (const Diagnostic& diagnostic : diagnostics) printToolError(diagnostic);
}

void MessagePrinter::printServerMessage(const Diagnostic& diagnostic) {
    if (diagnostic.severity < m_options.messageLevel) return;
    const bool withHeading = m_options.messageLevel == kAllWithHeading || !isPlainText(diagnostic.severity);
    const bool toErrorStream = m_options.errorStream == ErrorStream::All ||
                               m_options.format != Format::Text ||
                               (m_options.errorStream == ErrorStream::Errors && diagnostic.isError());
    const std::string text =
        (withHeading ? messageHeading(diagnostic) + "\n" : "") + textOf(diagnostic) + "\n";
    if (m_errors != nullptr && diagnostic.isError()) {
        m_errors->write(text);
        return m_errors->flush();
    }
    write(text, toErrorStream);
}

// Prints to standard error whatever -r says. Also prints to the output file, so that its readers see why the
// results end.
void MessagePrinter::printToolError(const Diagnostic& diagnostic) {
    const std::string text = "Sqlcmd: Error: " + diagnostic.driver + " : " + textOf(diagnostic) + ".\n";
    if (m_output.isFile() && m_options.format == Format::Text) m_output.write(text);
    m_output.flush();
    std::fputs(text.c_str(), stderr);
}

std::string MessagePrinter::textOf(const Diagnostic& diagnostic) const {
    return m_options.rawErrors ? diagnostic.names + diagnostic.text : diagnostic.text;
}

void MessagePrinter::write(std::string_view text, bool toErrorStream) {
    const bool isTextFile = m_output.isFile() && m_options.format == Format::Text;
    if (!toErrorStream || isTextFile) return m_output.write(text);
    m_output.flush();
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace sqlcmd
