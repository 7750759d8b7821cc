// The sandbox's T-SQL engine: databases in files, sessions that run batches.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "execute/AppLocks.h"
#include "storage/Storage.h"
#include "types/Values.h"

namespace tsql {

struct Column {
    std::string name;  // empty for an unnamed expression
    SqlType type;
    bool nullable = true;
    bool identity = false;
};

// An error or an informational text (PRINT, severity 0), as SQL Server numbers them.
struct Message {
    int number = 0;
    int severity = 0;  // "class": above 10 is an error; 20 and above ends the session
    int state = 1;
    int line = 1;           // within the batch or the procedure, from 1
    std::string procedure;  // empty outside of one
    std::string text;       // UTF-8
};

// A procedure call as drivers make it. Text of a call in all but its form: EXEC with these arguments.
struct ProcedureCall {
    struct Argument {
        std::string name;  // with its @; empty when given by position
        SqlType type;
        Value value;  // in its storage form; behind the call what came back, when it is an output
        bool output = false;
        bool isDefault = false;  // no value: the parameter's own
    };
    std::string procedure;  // as EXEC names it: "master.dbo.[a name]"
    std::vector<Argument> arguments;
    bool describeOnly = false;  // tell the columns of what would run, as under SET FMTONLY ON
    int status = 0;             // what the procedure returned
};

enum class TransactionEvent { Began, Committed, RolledBack };

// Receives what a batch produces, in its order. Each statement ends with statementDone().
// What a sink throws ends the batch (a client that is gone).
class ResultSink {
  public:
    virtual ~ResultSink() = default;
    virtual void columns(std::span<const Column> columns) = 0;  // begins a result set
    virtual void row(std::span<const CellView> cells) = 0;
    // rowCount: rows read or changed, or -1 where there is no count to show (SET NOCOUNT ON, no count).
    // isSelect: the statement made the result set that columns() began.
    virtual void statementDone(std::int64_t rowCount, bool isSelect) = 0;
    virtual void message(const Message& message) = 0;
    virtual void databaseChanged(std::string_view from, std::string_view to) = 0;  // USE
    virtual void transactionChanged(TransactionEvent) {}  // of the outermost transaction
    // What has been said reaches the client now: RAISERROR WITH NOWAIT.
    virtual void flush() {}
    // Asked between rows and statements; true ends the batch as an attention does.
    virtual bool cancelled() = 0;
};

// What all sessions share; safe under threads.
struct Engine {
    // Opens the directory, making it and its system databases (master, msdb, tempdb, model) when missing.
    // Throws std::runtime_error with a text for the operator.
    explicit Engine(const std::filesystem::path& dataDirectory);

    Storage storage;
    AppLocks locks;
};

class Executor;

// Whom a session serves, as HOST_NAME() and its kin tell it.
struct Client {
    std::string login;
    std::string host = {};
    std::string program = {};
};

// One client's session: current database, temporary tables, transaction, settings. One thread at a time.
class Session {
  public:
    Session(Engine& engine, Client client, std::string_view database, int spid);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs one batch of UTF-8 text. Errors of T-SQL reach the sink as messages.
    // False when the batch ended the session (severity 20 and above).
    bool runBatch(std::string_view batch, ResultSink& sink);
    bool call(ProcedureCall& call, ResultSink& sink);
    std::string_view database() const;
    // All but the transaction becomes what it is in a new session; false when there is none to keep.
    bool resetAroundTransaction(std::string_view database);

  private:
    std::unique_ptr<Executor> m_executor;
};

}  // namespace tsql
