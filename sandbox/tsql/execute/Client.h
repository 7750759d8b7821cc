// The client's side of a session: who it is, the procedures it calls, and what receives the results.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "messages/Message.h"
#include "types/Column.h"
#include "types/SqlType.h"

namespace tsql {

// Whom a session serves, as HOST_NAME() and its kin tell it.
struct Client {
    std::string login;
    std::string host = {};
    std::string program = {};
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

}  // namespace tsql
