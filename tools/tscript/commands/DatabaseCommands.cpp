// Command family `db`: a server's databases, their backups and their restore.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "backup/BackupFile.h"
#include "backup/LastBackup.h"
#include "backup/ServerScript.h"
#include "commands/Commands.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/TextWidth.h"
#include "installation/Installation.h"
#include "installation/ServerQuery.h"

namespace {

constexpr std::size_t kLongestStatement = 4999;  // the library truncates longer ones
// DBBase::getDBList() cuts names at blanks.
constexpr const char* kUserDatabases =
    "SELECT name FROM master.sys.databases "
    "WHERE name NOT IN ('master', 'tempdb', 'model', 'msdb', 'Northwind', 'pubs') ORDER BY name";
constexpr std::string_view kRestoreMessage = "Failed to execute Database Restore Command [";

struct DatabaseOptions {
    std::string account = "Dorvas";  // suite database with the server and the login to use
    std::string name;
    std::string file;
    std::string folder;
    bool verify = false;
    bool execute = false;
    bool test = false;
    bool yes = false;
    bool json = false;
    LastBackupOptions last{.account = &account};
};

ExitCode listDatabases(const DatabaseOptions& options) {
    DBBase db(/*flag=*/false);
    connectToServer(db, options.account);
    const auto rows = rowsOf(db, kUserDatabases, 1);
    if (options.json) {
        Json list = Json::array();
        for (const auto& row : rows) list.push_back({{"name", row[0]}});
        writeJson(list);
    } else {
        for (const auto& row : rows) writeResult(withoutControls(row[0]));
    }
    return ExitCode::kDone;
}

ExitCode showVersion(const DatabaseOptions& options) {
    DBBase db(/*flag=*/false);
    connectToServer(db, options.account);
    const std::string version = db.checkSQLServerProductVersion();
    if (version == "-1") throwQueryFailure(db);
    if (options.json) {
        writeJson({{"account", suiteDatabase(options.account).name}, {"majorVersion", version}});
    } else {
        writeResult(version);
    }
    return ExitCode::kDone;
}

ExitCode backUp(const DatabaseOptions& options) {
    checkServerName("the database name", options.name);
    checkServerPath("the backup file", options.file);
    const std::filesystem::path file = options.file;
    DBBase db(/*flag=*/false);
    connectToServer(db, options.account);
    if (options.verify) {
        writeResult(backUpVerified(db, options.name, options.file));
        return ExitCode::kDone;
    }
    const bool done = runInterruptibly({}, [&] {
        return db.backUpDB(file.filename().c_str(), file.parent_path().c_str(), options.name.c_str());
    });
    if (!done) throwQueryFailure(db);
    writeResult(db.getErrorMsg());
    return ExitCode::kDone;
}

ExitCode executeRestore(DBBase& db, const DatabaseOptions& options, const std::string& statement) {
    if (statement.size() >= kLongestStatement)
        throw Failure(ExitCode::kUsage, "the statement is too long and may have been truncated",
                      "Use shorter paths, or run the statement by hand.");
    confirm(options.yes, "The database " + options.name + " will be replaced by the backup.");
    const ServerReply reply =
        runOnServer(db, statement, "The database may be partly restored; run the restore again.");
    writeNote(reply.output);
    if (!reply.succeeded)
        throw Failure(ExitCode::kScriptFailed, "the restore failed", "See the server's message above.");
    writeNote("restored " + options.name);
    return ExitCode::kDone;
}

// Returns the statement, which DBBase::restoreDB() puts into its error message: it always fails.
std::string restoreStatement(DBBase& db, const DatabaseOptions& options, const std::string& folder) {
    std::string_view built;
    std::size_t end = built.npos;
    const bool known = runInterruptibly({}, [&] {
        db.restoreDB(options.file.c_str(), folder.c_str(), options.name.c_str());
        built = db.getErrorMsg();
        end = built.rfind("].");
        return built.starts_with(kRestoreMessage) && end != built.npos;
    });
    if (!known) throwQueryFailure(db);
    return std::string(built.substr(kRestoreMessage.size(), end - kRestoreMessage.size()));
}

ExitCode runTestRestore(const DatabaseOptions& options) {
    if (!options.folder.empty()) checkServerPath("the folder for the data files", options.folder);
    DBBase db(/*flag=*/false);
    connectToServer(db, options.account);
    writeResult(testRestore(db, {.file = options.file, .name = options.name, .folder = options.folder}));
    return ExitCode::kDone;
}

// Runs the statement only with --execute.
ExitCode showRestore(const DatabaseOptions& options) {
    checkServerName("the database name", options.name);
    checkServerPath("the backup file", options.file);
    if (options.test) return runTestRestore(options);
    if (options.folder.empty())
        throw Failure(
            ExitCode::kUsage, "the folder for the data files is not named",
            "Name it with --to: a folder on the server's host, which the server moves the files to.");
    std::string folder = options.folder;
    checkServerPath("the folder for the data files", folder);
    if (folder.back() != '/') folder += '/';
    DBBase db(/*flag=*/false);
    connectToServer(db, options.account);
    const std::string statement = restoreStatement(db, options, folder);
    writeResult(statement);
    std::fflush(resultStream());
    if (options.execute) return executeRestore(db, options, statement);
    writeNote("This is the statement; it has not been run.");
    return ExitCode::kDone;
}

void addLastBackup(CLI::App* family, Action& action, const std::shared_ptr<LastBackupOptions>& options) {
    CLI::App* last = addCommand(family, action, "last-backup", "Show when databases were last backed up",
                                options, showLastBackup);
    addOption(last, "DB", options->name, "The database (default: all user databases)");
    addOption(last, "--older-than", options->olderThan,
              "Exit code 1 if a backup is older or missing: 90m, 26h, 7d", {.type = "TIME"});
    addOption(last, "--warn-after", options->warnAfter,
              "With --nagios: age above which the state is a warning", {.type = "TIME"});
    addFlag(last, "--json", options->json, "Write JSON");
    addFlag(last, "--nagios", options->nagios,
            "Write one line and exit with the code of a Nagios check; older than --older-than is critical",
            "--json");
    addFlag(last, "--prometheus", options->prometheus, "Write metrics for Prometheus", "--json");
}

}  // namespace

void addDatabaseCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<DatabaseOptions>();
    CLI::App* family = addFamily(app, "db", "The databases of a server, their backups and their restore");
    addOption(family, "--db", options->account,
              "The suite database whose server and login are used (default: Dorvas)", {.type = "DB"});

    CLI::App* list = addCommand(family, action, "list", "List the user databases", options, listDatabases);
    CLI::App* version =
        addCommand(family, action, "version", "Show the server's major version", options, showVersion);
    for (CLI::App* listing : {list, version}) addFlag(listing, "--json", options->json, "Write JSON");
    addLastBackup(family, action, std::shared_ptr<LastBackupOptions>(options, &options->last));
    CLI::App* backup = addCommand(family, action, "backup", "Back a database up", options, backUp);
    addOption(backup, "DB", options->name, "The database", {.required = true});
    addOption(backup, "FILE", options->file, "The backup file, a path on the server's host",
              {.required = true});
    addFlag(backup, "--verify", options->verify,
            "Write checksums, and have the server read the backup and verify them");
    CLI::App* restore = addCommand(family, action, "restore",
                                   "Show the statement that restores a database; with --execute run it",
                                   options, showRestore);
    addOption(restore, "FILE", options->file, "The backup file, a path on the server's host",
              {.required = true});
    addOption(restore, "DB", options->name, "The database", {.required = true});
    addOption(restore, "--to", options->folder,
              "Folder on the server's host for the data files; required without --test", {.type = "DIR"});
    addFlag(restore, "--execute", options->execute, "Run the statement, after asking");
    addFlag(restore, "--test", options->test,
            "Restore as the new database DB beside the original, check it with DBCC CHECKDB, and drop it",
            "--execute");
    addYesOption(restore, options->yes);
}
