// Remote procedure calls: read from the wire, and turned into the batch that does what they ask.
// [MS-TDS] 2.2.6.6.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "Engine.h"
#include "Parameter.h"

namespace tds {

struct RpcCall {
    std::string procedure;  // calls by number have the procedure's name here as well
    std::vector<Parameter> parameters;
};

// `body` is the request behind its headers. Throws ProtocolError.
std::vector<RpcCall> parseRpc(ByteView body);

// A batch of T-SQL that runs a call. Where it has results of its own to give back (a procedure's status,
// output parameters) its last result set holds them in one row, under kOutputMarker as first column name.
struct RpcBatch {
    std::string text;
    bool returnsStatus = false;      // the first value is the status
    std::vector<Parameter> outputs;  // in the order of the further values
    std::vector<Parameter> known;    // outputs whose value is known before the batch runs
};
inline constexpr std::string_view kOutputMarker = "<tds output>";

// The prepared statements of one session.
class PreparedStatements {
  public:
    // Empty text for a call that needs no batch. Throws tsql-like errors as RpcError.
    RpcBatch batchFor(const RpcCall& call);

  private:
    struct Statement {
        std::string declarations;
        std::string text;
    };
    RpcBatch prepare(const RpcCall& call, bool executes);
    RpcBatch execute(const RpcCall& call);
    RpcBatch unprepare(const RpcCall& call);
    const Statement& find(const RpcCall& call) const;

    std::map<int, Statement> m_statements;
    int m_lastHandle = 0;
};

// A call that cannot be run; what the client is told.
class RpcError : public std::exception {
  public:
    RpcError(int number, int severity, std::string text)
        : message{number, severity, 1, 1, {}, std::move(text)} {}
    const char* what() const noexcept override { return message.text.c_str(); }
    tsql::Message message;
};

}  // namespace tds
