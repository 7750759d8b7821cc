// T-SQL engine of the sandbox: databases in files, sessions that run batches.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "execute/AppLocks.h"
#include "execute/Client.h"
#include "storage/Storage.h"

namespace tsql {

// State shared by all sessions. Thread-safe.
struct Engine {
    // Opens the data directory. Creates it and the system databases (master, msdb, tempdb, model) if missing.
    // Throws std::runtime_error with a message for the operator.
    // BACKUP writes only there and in the backup folders.
    explicit Engine(const std::filesystem::path& dataDirectory,
                    const std::vector<std::filesystem::path>& backupFolders = {});

    Storage storage;
    AppLocks locks;
};

class Executor;

// Session of one client: current database, temporary tables, transaction, settings. Not thread-safe.
class Session {
  public:
    Session(Engine& engine, Client client, std::string_view database, int spid);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs one batch, in UTF-8. T-SQL errors are passed to the sink as messages. Returns false if the batch
    // ended the session (severity 20 and above).
    bool runBatch(std::string_view batch, ResultSink& sink);
    bool call(ProcedureCall& call, ResultSink& sink);
    // Inserts the rows of the INSERT BULK that the last batch ended with, all or none.
    bool insertBulk(const RowSource& sendRows, ResultSink& sink);
    std::string_view database() const;
    // Resets everything but the open transaction to the state of a new session. Returns false without an open
    // transaction.
    bool resetAroundTransaction(std::string_view database);

  private:
    std::unique_ptr<Executor> m_executor;
};

}  // namespace tsql
