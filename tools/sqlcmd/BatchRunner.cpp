#include "BatchRunner.h"

#include <algorithm>

#include "Errors.h"
#include "Utf.h"

namespace sqlcmd {
namespace {

constexpr int kFatalSeverity = 20;  // from here on the server ends the connection

// A driver sends what stands before the bytes that it cannot convert: a DELETE would lose its WHERE.
void refuseUnlessUtf8(std::string_view batch) {
    const std::size_t fault = utf8Fault(batch);
    if (fault == std::string_view::npos) return;
    const auto line = 1 + std::count(batch.begin(), batch.begin() + static_cast<std::ptrdiff_t>(fault), '\n');
    throw ToolError("Sqlcmd: Error: the batch is not run: its line " + std::to_string(line) +
                    " is not UTF-8. Save the script in UTF-8, or in UTF-16 with its byte order mark.");
}

}  // namespace

BatchRunner::BatchRunner(const Connection& connection, const Options& options, Output& output)
    : m_connection(connection), m_options(options), m_output(output), m_messages(options, output) {}

int BatchRunner::run(const std::string& batch, const ResultMode& mode) {
    refuseUnlessUtf8(batch);
    Statement statement(m_connection);
    SQLRETURN code = statement.execute(batch);
    bool more = report(statement, code);
    while (more) {
        if (code != SQL_ERROR) printResult(statement, mode);
        m_output.flush();  // the server may take its time for what follows
        code = statement.nextResult();
        more = report(statement, code) && code != SQL_NO_DATA;
    }
    m_output.flush();
    const int severity = m_messages.takeHighestSeverity();
    if (severity >= kFatalSeverity || (severity > 10 && m_connection.isDead())) throw AlreadyReported();
    return severity;
}

// Prints the messages that came with a return code. False when nothing can follow: a server's error leaves
// the rest of the batch to be read, a driver's does not.
bool BatchRunner::report(const Statement& statement, SQLRETURN code) {
    if (code == SQL_SUCCESS) return true;
    const auto diagnostics = statement.diagnostics();
    m_messages.print(diagnostics);
    if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return true;
    return !diagnostics.empty() &&
           std::all_of(diagnostics.begin(), diagnostics.end(),
                       [](const Diagnostic& d) { return d.fromServer && d.severity < kFatalSeverity; });
}

void BatchRunner::printResult(Statement& statement, const ResultMode& mode) {
    if (statement.columnCount() > 0) return printRows(statement, mode);
    if (const long long count = statement.rowCount(); count >= 0) printCount(count);
}

void BatchRunner::printRows(Statement& statement, const ResultMode& mode) {
    // Its end clears the statement's messages.
    ResultPrinter printer(statement, m_options.layout, mode, m_output, m_messages);
    const SQLRETURN code = printer.print();
    report(statement, code);  // behind the last row as well: a warning of NULLs that an aggregate left out
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
