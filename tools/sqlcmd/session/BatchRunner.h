// Runs batches and prints their rows, row counts and messages in the order in which they arrive.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "client/Client.h"
#include "options/Options.h"
#include "print/DataPrinter.h"
#include "print/MessagePrinter.h"
#include "print/Progress.h"
#include "print/ResultPrinter.h"
#include "text/Output.h"

namespace sqlcmd {

struct BatchOutcome {
    int severity = 0;                  // highest severity of the batch's messages
    std::optional<int> exitCode = {};  // the tool must end with this code
};

class BatchRunner {
  public:
    // The arguments must outlive the runner.
    BatchRunner(Client& client, const Options& options, Output& output)
        : m_client(&client),
          m_options(options),
          m_output(output),
          m_data(options.format, options.layout, output),
          m_progress(options.progress) {
        setClient(client);
    }
    BatchRunner(const BatchRunner&) = delete;
    BatchRunner& operator=(const BatchRunner&) = delete;

    void setClient(Client& client) {
        m_client = &client;
        client.setTick([this] { updateWhileWaiting(); });
    }
    // Sets the T-SQL that sets up the session of a new connection. It is sent before the first batch;
    // together with it, for one round trip less, if that batch only sets an option as well.
    void setSessionSettings(std::string settings) { m_settings = std::move(settings); }
    void setTraceOutput(Output* trace) { m_trace = trace; }  // of the statistics; null: the output
    // Command that shows results wider than the terminal; empty: none.
    void setPager(std::string command) { m_pager = std::move(command); }
    void setErrorOutput(Output* errors) { m_errors = errors; }  // see MessagePrinter

    // Whether the output of a batch is written while the server runs the next one, or when the caller flushes
    // it. With -b, no batch is sent before the output of the last one is written.
    bool defersOutput() const { return m_output.isRegularFile() && !m_options.stopOnError; }

    // Throws AlreadyReported when the connection is lost, ToolError when the batch is not UTF-8 or the output
    // cannot be written.
    BatchOutcome run(const std::string& batch, const ResultMode& mode);

    // Completes the output before it ends or continues in another file.
    void finishOutput() { m_data.finish(); }
    // Prints text that is no result: with --csv, --json and --jsonl to standard error.
    void printInformation(std::string_view text);

  private:
    void updateWhileWaiting();
    void printResult(RunningBatch& running, const ResultMode& mode);
    void printCount(long long count);
    void printStatistics(std::chrono::steady_clock::duration time);

    std::string settingsBefore(const std::string& batch);

    Client* m_client;
    std::string m_settings;  // not sent yet
    const Options& m_options;
    Output& m_output;
    Output* m_errors = nullptr;
    Output* m_trace = nullptr;
    std::string m_pager;
    DataPrinter m_data;
    Progress m_progress;
};

}  // namespace sqlcmd
