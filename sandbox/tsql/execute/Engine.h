// The sandbox's T-SQL engine: databases in files, sessions that run batches.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include "execute/AppLocks.h"
#include "execute/Client.h"
#include "storage/Storage.h"

namespace tsql {

// What all sessions share; safe under threads.
struct Engine {
    // Opens the directory, making it and its system databases (master, msdb, tempdb, model) when missing.
    // Throws std::runtime_error with a text for the operator.
    explicit Engine(const std::filesystem::path& dataDirectory);

    Storage storage;
    AppLocks locks;
};

class Executor;

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
