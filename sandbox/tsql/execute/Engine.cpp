#include "execute/Engine.h"

#include "execute/Executor.h"

namespace tsql {
namespace {

// History of backups in msdb, with the columns that are supported.
constexpr std::string_view kBackupSet =
    R"(IF OBJECT_ID('msdb..backupset') IS NULL CREATE TABLE msdb..backupset (backup_set_id int IDENTITY(1,1)
NOT NULL PRIMARY KEY, name nvarchar(128) NULL, database_name nvarchar(128) NULL, backup_start_date datetime
NULL, backup_finish_date datetime NULL, type char(1) NULL, backup_size numeric(18,0) NULL))";

}  // namespace

Engine::Engine(const std::filesystem::path& dataDirectory,
               const std::vector<std::filesystem::path>& backupFolders)
    : storage(dataDirectory, backupFolders) {
    struct final : ResultSink {
        void message(const Message& message) override {
            if (message.severity <= 10) return;
            throw std::runtime_error("cannot prepare the system databases: " + message.text);
        }
    } sink;
    Executor executor(storage, locks, {"sa"}, "msdb", 1);
    executor.runBatch(kBackupSet, sink);
}

std::unique_ptr<Session> openSession(Engine& engine, Client client, std::string_view database, int spid) {
    return std::make_unique<Executor>(engine.storage, engine.locks, std::move(client), database, spid);
}

}  // namespace tsql
