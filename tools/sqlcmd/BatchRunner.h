// Runs batches and prints what they give, in the order in which it happens.
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
    BatchRunner(const Connection& connection, const Options& options, Output& output);

    // The highest severity of its messages. Throws AlreadyReported when the connection is lost.
    int run(const std::string& batch, const ResultMode& mode);

  private:
    bool report(const Statement& statement, SQLRETURN code);
    void printResult(Statement& statement, const ResultMode& mode);
    void printRows(Statement& statement, const ResultMode& mode);
    void printCount(long long count);

    const Connection& m_connection;
    const Options& m_options;
    Output& m_output;
    MessagePrinter m_messages;
};

}  // namespace sqlcmd
