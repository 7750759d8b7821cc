// Connection to SQL Server as the tool needs it. An interrupt (terminal/Interrupt.h) cancels the running
// batch. OdbcClient works with every ODBC driver. DbLibClient works over FreeTDS's DB-Library, which reports
// the state and procedure of messages; FreeTDS's ODBC driver does not.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/Diagnostic.h"
#include "text/TextBuffer.h"
#include "values/ColumnInfo.h"

namespace sqlcmd {

using MessageHandler = std::function<void(const Diagnostic&)>;

// A batch that is running. Destroying it discards the results that have not been read.
class RunningBatch {
  public:
    virtual ~RunningBatch() = default;

    // Advances to the batch's next result; the first call to the first one. False at the end of the batch,
    // and after an error that the batch or the connection does not survive.
    virtual bool nextResult() = 0;
    virtual const std::vector<ColumnInfo>& columns() const = 0;  // empty: the result has no rows
    virtual bool nextRow() = 0;
    virtual bool readAllRows() const = 0;  // false if an error ended the rows
    virtual bool mayHaveMoreResults() const { return true; }
    virtual long long rowCount() const = 0;  // -1: the server has not sent a count

    // Appends the value that a column has in the current row, in the form that shapeValue() takes: at least
    // `enough` bytes of it, kWholeValue for all. Returns false for NULL. The columns of a row must be read in
    // ascending order, each once at most.
    virtual bool appendValue(std::size_t column, std::size_t enough, TextBuffer& text) = 0;
    static constexpr std::size_t kWholeValue = 0;
};

class Client {
  public:
    virtual ~Client() = default;

    // T-SQL that gives the session the settings of an ODBC session, apart from QUOTED_IDENTIFIER.
    virtual std::string_view sessionSettings() const = 0;

    // Sends a batch. Messages are passed to `handler` in the order in which they arrive, while the batch is
    // read. One batch can run at a time.
    virtual std::unique_ptr<RunningBatch> run(const std::string& batch, MessageHandler handler) = 0;
    virtual void setQueryTimeout(int seconds) = 0;  // of the following batches; 0: none
    // Sets a function that may be called about once a second while the client waits for the server.
    virtual void setTick(std::function<void()> /*tick*/) {}
    virtual bool isDead() const = 0;
};

// The connection could not be established: no server, or the login failed.
struct LoginError : std::exception {
    explicit LoginError(std::vector<Diagnostic> what) : diagnostics(std::move(what)) {}
    std::vector<Diagnostic> diagnostics;
};

}  // namespace sqlcmd
