#include "BatchRunner.h"

#include <algorithm>

#include "Errors.h"
#include "Utf.h"

namespace sqlcmd {
namespace {

constexpr int kFatalSeverity = 20;  // SQL Server ends the connection from this severity on

// Throws unless the batch is UTF-8. A driver would send the part before the first invalid bytes: a DELETE
// might lose its WHERE.
void requireUtf8(std::string_view batch) {
    const std::size_t invalid = firstInvalidUtf8(batch);
    if (invalid == std::string_view::npos) return;
    const auto line =
        1 + std::count(batch.begin(), batch.begin() + static_cast<std::ptrdiff_t>(invalid), '\n');
    throw ToolError("Sqlcmd: Error: the batch is not run: its line " + std::to_string(line) +
                    " is not UTF-8. Save the script in UTF-8, or in UTF-16 with its byte order mark.");
}

// Prints the messages of a call. Returns whether the batch can go on: it can after an error of the server,
// not after one of the driver or one that ends the connection.
bool printMessages(const Statement& statement, SQLRETURN code, MessagePrinter& messages) {
    if (code == SQL_SUCCESS) return true;
    const auto diagnostics = statement.diagnostics();
    messages.print(diagnostics);
    if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return true;
    return !diagnostics.empty() &&
           std::all_of(diagnostics.begin(), diagnostics.end(),
                       [](const Diagnostic& d) { return d.fromServer && d.severity < kFatalSeverity; });
}

}  // namespace

int BatchRunner::run(const std::string& batch, const ResultMode& mode) {
    requireUtf8(batch);
    MessagePrinter messages(m_options, m_output);
    Statement statement(m_connection);
    SQLRETURN code = statement.execute(batch);
    bool hasResult = printMessages(statement, code, messages);
    while (hasResult) {
        if (code != SQL_ERROR) printResult(statement, mode, messages);
        m_output.flush();  // the next result may take long
        code = statement.nextResult();
        hasResult = printMessages(statement, code, messages) && code != SQL_NO_DATA;
    }
    m_output.flush();
    const int severity = messages.highestSeverity();
    const bool isConnectionLost =
        severity >= kFatalSeverity || (severity >= kErrorSeverity && m_connection.isDead());
    if (isConnectionLost) throw AlreadyReported();
    return severity;
}

void BatchRunner::printResult(Statement& statement, const ResultMode& mode, MessagePrinter& messages) {
    if (statement.columnCount() > 0) return printRows(statement, mode, messages);
    if (const long long count = statement.rowCount(); count >= 0) printCount(count);
}

void BatchRunner::printRows(Statement& statement, const ResultMode& mode, MessagePrinter& messages) {
    // The printer's destructor clears the statement's messages: it must run after printMessages().
    ResultPrinter printer(statement, m_options.layout, mode, m_output, messages);
    const SQLRETURN code = printer.print();
    printMessages(statement, code, messages);  // such as a warning that an aggregate has ignored NULLs
    if (mode.xml || code != SQL_NO_DATA) return;
    if (const long long count = statement.rowCount(); count >= 0)
        printCount(count);
    else
        m_output.write("\n");
}

void BatchRunner::printCount(long long count) {
    m_output.write("\n(" + std::to_string(count) + " rows affected)\n");
}

}  // namespace sqlcmd
