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

// Session of one client: current database, temporary tables, transaction, settings. Not thread-safe.
class Session {
  public:
    virtual ~Session() = default;

    // Runs one batch, in UTF-8. T-SQL errors are passed to the sink as messages. Returns false if the batch
    // ended the session (severity 20 and above).
    virtual bool runBatch(std::string_view batch, ResultSink& sink) = 0;
    virtual bool call(ProcedureCall& call, ResultSink& sink) = 0;
    // Inserts the rows of the INSERT BULK that the last batch ended with, all or none.
    virtual bool insertBulk(const RowSource& sendRows, ResultSink& sink) = 0;
    virtual const std::string& database() const = 0;
    // Resets everything but the open transaction to the state of a new session. Returns false without an open
    // transaction.
    virtual bool resetAroundTransaction(std::string_view database) = 0;
};
std::unique_ptr<Session> openSession(Engine& engine, Client client, std::string_view database, int spid);

}  // namespace tsql
