// Runs batches and prints their rows, row counts and messages in the order in which they arrive.
#pragma once

#include <string>

#include "Connection.h"
#include "MessagePrinter.h"
#include "Options.h"
#include "Output.h"
#include "ResultPrinter.h"

namespace sqlcmd {

class BatchRunner {
  public:
    // The arguments must outlive the runner.
    BatchRunner(const Connection& connection, const Options& options, Output& output)
        : m_connection(connection), m_options(options), m_output(output) {}

    // Returns the highest severity of the batch's messages. Throws AlreadyReported when the connection is
    // lost, ToolError when the batch is not UTF-8 or the output cannot be written.
    int run(const std::string& batch, const ResultMode& mode);

  private:
    void printResult(Statement& statement, const ResultMode& mode, MessagePrinter& messages);
    void printRows(Statement& statement, const ResultMode& mode, MessagePrinter& messages);
    void printCount(long long count);

    const Connection& m_connection;
    const Options& m_options;
    Output& m_output;
};

}  // namespace sqlcmd
