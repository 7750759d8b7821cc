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

}  // namespace

BatchOutcome BatchRunner::run(const std::string& batch, const ResultMode& mode) {
    requireUtf8(batch);
    MessagePrinter messages(m_options, m_output);
    {
        const auto running = m_client.run(batch, [&](const Diagnostic& message) { messages.print(message); });
        while (running->nextResult()) {
            printResult(*running, mode);
            m_output.flush();  // the next result may take long
        }
    }
    m_output.flush();
    const int severity = messages.highestSeverity();
    const bool isConnectionLost =
        severity >= kFatalSeverity || (severity >= kErrorSeverity && m_client.isDead());
    if (isConnectionLost) throw AlreadyReported();
    return {severity, messages.endingNumber()};
}

void BatchRunner::printResult(RunningBatch& running, const ResultMode& mode) {
    const bool hasRows = !running.columns().empty();
    if (hasRows) ResultPrinter(running, m_options.layout, mode, m_output).print();
    if (hasRows && (mode.xml || !running.readAllRows())) return;
    if (const long long count = running.rowCount(); count >= 0)
        printCount(count);
    else if (hasRows)
        m_output.write("\n");
}

void BatchRunner::printCount(long long count) {
    m_output.write("\n(" + std::to_string(count) + " rows affected)\n");
}

}  // namespace sqlcmd
