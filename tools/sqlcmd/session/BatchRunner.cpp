#include "session/BatchRunner.h"

#include <algorithm>
#include <cstdio>

#include "session/Programs.h"
#include "text/Errors.h"
#include "text/Text.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

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

// True for a batch like "SET ARITHABORT ON".
bool setsOneOption(std::string_view batch) {
    constexpr std::string_view kOptions[] = {"ANSI_WARNINGS", "ARITHABORT",         "ARITHIGNORE",
                                             "NOCOUNT",       "NUMERIC_ROUNDABORT", "XACT_ABORT"};
    std::string_view rest = trimmed(batch);
    const std::string verb = upperCase(takeWord(rest));
    const std::string option = upperCase(takeWord(rest));
    const std::string value = upperCase(rest);
    return verb == "SET" && (value == "ON" || value == "OFF") &&
           std::find(std::begin(kOptions), std::end(kOptions), option) != std::end(kOptions);
}

}  // namespace

// Sends the settings, or returns them if they can precede the batch, in its first line: the server's line
// numbers stay.
std::string BatchRunner::settingsBefore(const std::string& batch) {
    const std::string settings = std::exchange(m_settings, {});
    if (settings.empty()) return {};
    if (setsOneOption(batch)) return settings + " ";
    run(settings, {.isInternal = true});
    return {};
}

// Readers that follow the output see what the server has sent so far.
void BatchRunner::updateWhileWaiting() {
    m_progress.update();
    m_output.flushEarly();
}

BatchOutcome BatchRunner::run(const std::string& batch, const ResultMode& mode) {
    requireUtf8(batch);
    std::string settings = mode.isInternal ? std::string() : settingsBefore(batch);
    const std::string& sent = settings.empty() ? batch : settings += batch;
    MessagePrinter messages(m_options, m_output, m_errors);
    const auto start = m_options.statistics == Statistics::None ? std::chrono::steady_clock::time_point()
                                                                : std::chrono::steady_clock::now();
    if (!mode.isInternal) m_progress.beginBatch();
    {
        const auto running = m_client->run(sent, [&](const Diagnostic& message) {
            messages.print(message);
            m_output.flushEarly();  // the server may be silent for long after a message
        });
        m_output.flush();  // of the last batch
        while (running->nextResult()) {
            printResult(*running, mode);
            if (running->mayHaveMoreResults()) m_output.flush();  // the next one may take long
        }
    }
    if (!mode.isInternal) {
        m_progress.endBatch();
        if (m_options.statistics != Statistics::None)
            printStatistics(std::chrono::steady_clock::now() - start);
    }
    const int severity = messages.highestSeverity();
    const bool isConnectionLost =
        severity >= kFatalSeverity || (severity >= kErrorSeverity && m_client->isDead());
    if (isConnectionLost || !defersOutput()) m_output.flush();
    if (isConnectionLost) throw AlreadyReported();
    return {severity, messages.endingNumber()};
}

void BatchRunner::printResult(RunningBatch& running, const ResultMode& mode) {
    const bool hasRows = !running.columns().empty();
    if (m_options.format != Format::Text) {
        if (hasRows) m_data.print(running, mode.lastValue, m_progress);
        return;
    }
    if (hasRows) {
        ResultPrinter printer(running, m_options.layout, mode, m_output);
        const Pager pager(m_output, m_pager, printer.width());
        printer.print(m_progress);
    }
    if (hasRows && (mode.xml || !running.readAllRows())) return;
    if (const long long count = running.rowCount(); count >= 0)
        printCount(count);
    else if (hasRows)
        m_output.write("\n");
}

void BatchRunner::printCount(long long count) {
    m_output.write("\n(" + std::to_string(count) + " rows affected)\n");
}

void BatchRunner::printStatistics(std::chrono::steady_clock::duration time) {
    const auto milliseconds =
        std::max<long long>(1, std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
    const double perSecond = 1000.0 / static_cast<double>(milliseconds);
    const auto average = static_cast<double>(milliseconds);
    char text[256];
    if (m_options.statistics == Statistics::Colons)
        std::snprintf(text, sizeof text, "\n%d:1:%lld:%.2f:%.2f\n", m_options.packetSize, milliseconds,
                      average, perSecond);
    else
        std::snprintf(text, sizeof text,
                      "\nNetwork packet size (bytes): %d\n1 xact[s]:\n"
                      "Clock Time (ms.): total %9lld  avg %8.2f (%.2f xacts per sec.)\n",
                      m_options.packetSize, milliseconds, average, perSecond);
    if (m_trace == nullptr) return printInformation(text);
    m_trace->write(text);
    m_trace->flush();
}

void BatchRunner::printInformation(std::string_view text) {
    if (m_options.format == Format::Text) return m_output.write(text);
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace sqlcmd
