// The client's side of a session: who it is, the procedures it calls, and what receives the results.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "messages/Messages.h"
#include "types/SqlType.h"

namespace tsql {

// A procedure call from a driver, equivalent to EXEC with these arguments.
struct ProcedureCall {
    struct Argument {
        std::string name;  // with @; empty: passed by position
        SqlType type;
        Value value;  // in storage form; after the call, the new value of an output
        bool output = false;
        bool isDefault = false;  // use the parameter's default
        // Of a table: its type in T-SQL, whether its rows have each column, and the rows.
        std::string tableType = {};
        std::vector<bool> columns = {};
        RowSource rows = {};
    };
    std::string procedure;  // as EXEC names it: "master.dbo.[a name]"
    std::vector<Argument> arguments;
    int status = 0;        // return value of the procedure
    bool aborted = false;  // an error or a cancellation ended the whole batch
};

constexpr int kFatalSeverity = 20;  // ends the session

// An error as a message, by default of a batch's first line.
inline Message asMessage(const SqlError& error, int line = 1, const std::string& procedure = {}) {
    const bool namesLine = error.number == kInvalidLength || error.number == kInvalidScale;
    const std::string prefix = namesLine ? "Line " + std::to_string(line) + ": " : "";
    return {error.number, error.severity, error.state, line, procedure, prefix + error.what()};
}

// What a finished statement did.
enum class StatementKind { Other, Select, Insert, Update, Delete, Merge };

enum class TransactionEvent { Began, Committed, RolledBack };

// Receiver of the results of a batch, in order. Each statement ends with statementDone(). An exception from
// the sink, as for a lost client, ends the batch.
class ResultSink {
  public:
    virtual ~ResultSink() = default;
    virtual void columns(std::span<const Column>) {}  // begins a result set
    virtual void row(Cells) {}
    // rowCount: rows read or changed; -1: not reported, as under SET NOCOUNT ON.
    virtual void statementDone(std::int64_t /*rowCount*/, StatementKind) {}
    // Enclose the statements of a procedure that the batch itself calls. status: the return value; null if an
    // error has ended the procedure.
    virtual void procedureBegan() {}
    virtual void procedureEnded(std::optional<std::int32_t> /*status*/) {}
    virtual void message(const Message& message) = 0;
    virtual void databaseChanged(std::string_view /*from*/, std::string_view /*to*/) {}  // USE
    virtual void transactionChanged(TransactionEvent) {}  // of the outermost transaction
    // Sends everything to the client now, for RAISERROR WITH NOWAIT.
    virtual void flush() {}
    // Called between rows and statements. True cancels the batch.
    virtual bool cancelled() { return false; }
};

}  // namespace tsql
