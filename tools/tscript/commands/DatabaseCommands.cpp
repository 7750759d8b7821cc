// Command family `db`: a server's databases, their backups and their restore.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "commands/Commands.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Account.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "system/Interrupt.h"
#include "system/ScratchFile.h"

namespace {

constexpr std::size_t kLongestPath = 900;  // the library's path buffers hold 1,024 bytes
constexpr std::size_t kLongestDatabaseName = 128;
constexpr std::size_t kLongestStatement = 4999;  // the library truncates longer ones
constexpr std::string_view kRestoreMessage = "Failed to execute Database Restore Command [";

struct DatabaseOptions {
    std::string account = "Dorvas";  // suite database with the server and the login to use
    std::string name;
    std::string file;
    std::string folder;
    bool execute = false;
    bool yes = false;
    bool json = false;
};

// Throws Failure with the reason if the connection fails.
void connect(DBBase& db, const DatabaseOptions& options) {
    requireStore();
    if (!openAccount(db, suiteDatabase(options.account))) throw diagnoseDatabase(options.account).failure();
}

[[noreturn]] void throwQueryFailure(const DBBase& db) {
    requireQueryTool();
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    std::string what = db.getErrorMsg();
    for (const DVUCause_t& cause : causes) what += "\n" + cause.text;
    throw Failure(ExitCode::kScriptFailed, what,
                  "See the server's message in " + sessionLogFile().string() + ".");
}

// The library inserts names and paths into T-SQL literals without quoting them.
void checkSqlName(const std::string& what, const std::string& text, std::size_t maximum) {
    const auto isForbidden = [](char c) {
        return c == '\'' || c == '%' || static_cast<unsigned char>(c) < 0x20;
    };
    checkQueryText(what, text, maximum);
    if (text.empty() || std::any_of(text.begin(), text.end(), isForbidden))
        throw Failure(ExitCode::kUsage,
                      what + " must not be empty or hold quotes, percent signs or control characters");
}

void checkServerPath(const std::string& what, const std::string& path) {
    checkSqlName(what, path, kLongestPath);
    if (path.front() != '/')
        throw Failure(ExitCode::kUsage, what + " '" + path + "' is not absolute",
                      "It is a path on the server's host; write it from the root.");
}

// Runs `work` with an InterruptGuard, so that Ctrl-C ends the query tool too. Throws Failure with `advice` if
// it was interrupted, and if a query tool that wrote no output counted as a success; otherwise returns what
// `work` returned.
template <typename Work>
bool runInterruptibly(const std::string& advice, Work&& work) {
    const InterruptGuard guard;
    const DVUCauses collector;
    const bool done = work();
    if (!done && guard.interrupted()) throw Failure(ExitCode::kInterrupted, "interrupted", advice);
    std::vector<DVUCause_t> causes;
    collector.get(causes);
    if (hasSilentTool(causes)) throw silentTool().failure();
    return done;
}

ExitCode listDatabases(const DatabaseOptions& options) {
    DBBase db(/*flag=*/false);
    connect(db, options);
    const std::vector<std::string> names = db.getDBList();
    if (names.empty()) throwQueryFailure(db);
    if (options.json) {
        Json list = Json::array();
        for (const std::string& name : names) list.push_back({{"name", name}});
        writeJson(list);
    } else {
        for (const std::string& name : names) writeResult(name);
    }
    return ExitCode::kDone;
}

ExitCode showVersion(const DatabaseOptions& options) {
    DBBase db(/*flag=*/false);
    connect(db, options);
    const std::string version = db.checkSQLServerProductVersion();
    if (version == "-1") throwQueryFailure(db);
    if (options.json) {
        writeJson({{"account", suiteDatabase(options.account).name}, {"majorVersion", version}});
    } else {
        writeResult(version);
    }
    return ExitCode::kDone;
}

ExitCode showLastBackup(const DatabaseOptions& options) {
    checkSqlName("the database name", options.name, kLongestDatabaseName);
    DBBase db(/*flag=*/false);
    connect(db, options);
    std::array<char, 256> days{};
    std::array<char, 256> date{};
    if (!db.getLastBackUpInfo(options.name.c_str(), days.data(), date.data())) throwQueryFailure(db);
    const bool never = std::string_view(days.data()) == "NULL";
    if (options.json) {
        writeJson({{"name", options.name},
                   {"lastBackup", never ? Json() : Json(date.data())},
                   {"daysAgo", never ? Json() : Json(std::strtol(days.data(), nullptr, 10))}});
    } else {
        writeResult(never ? "never" : std::string(date.data()) + ", " + days.data() + " day(s) ago");
    }
    return ExitCode::kDone;
}

ExitCode backUp(const DatabaseOptions& options) {
    checkSqlName("the database name", options.name, kLongestDatabaseName);
    checkServerPath("the backup file", options.file);
    const std::filesystem::path file = options.file;
    DBBase db(/*flag=*/false);
    connect(db, options);
    const bool done = runInterruptibly({}, [&] {
        return db.backUpDB(file.filename().c_str(), file.parent_path().c_str(), options.name.c_str());
    });
    if (!done) throwQueryFailure(db);
    writeResult(db.getErrorMsg());
    return ExitCode::kDone;
}

// The query tool reads the statement from a file: on its command line it would be truncated.
ExitCode executeRestore(DBBase& db, const DatabaseOptions& options, const std::string& statement) {
    if (statement.size() >= kLongestStatement)
        throw Failure(ExitCode::kUsage, "the statement is too long and may have been truncated",
                      "Use shorter paths, or run the statement by hand.");
    confirm(options.yes, "The database " + options.name + " will be replaced by the backup.");
    const ScratchFile file;
    const ScratchFile output;
    std::ofstream out(file.path(), std::ios::binary);
    out << statement << "\nGO\n";
    out.close();
    if (!out) throw Failure(ExitCode::kInstallation, file.path() + " cannot be written");
    const bool done = runInterruptibly("The database may be partly restored; run the restore again.", [&] {
        return db.RunFileQuery(file.path().c_str(), output.path().c_str(), "MASTER", /*toolSyntax=*/true,
                               /*errorLevel=*/false);
    });
    writeNote(output.content());
    if (!done)
        throw Failure(ExitCode::kScriptFailed, "the restore failed", "See the server's message above.");
    writeNote("restored " + options.name);
    return ExitCode::kDone;
}

// Always fails in the library, which returns the statement as its error message.
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

// Runs the statement only with --execute.
ExitCode showRestore(const DatabaseOptions& options) {
    checkSqlName("the database name", options.name, kLongestDatabaseName);
    checkServerPath("the backup file", options.file);
    if (options.folder.empty())
        throw Failure(
            ExitCode::kUsage, "the folder for the data files is not named",
            "Name it with --to: a folder on the server's host, which the server moves the files to.");
    std::string folder = options.folder;
    checkServerPath("the folder for the data files", folder);
    if (folder.back() != '/') folder += '/';
    DBBase db(/*flag=*/false);
    connect(db, options);
    const std::string statement = restoreStatement(db, options, folder);
    writeResult(statement);
    std::fflush(resultStream());
    if (options.execute) return executeRestore(db, options, statement);
    writeNote("This is the statement; it has not been run.");
    return ExitCode::kDone;
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
    CLI::App* last = addCommand(family, action, "last-backup", "Show when a database was last backed up",
                                options, showLastBackup);
    addOption(last, "DB", options->name, "The database", {.required = true});
    for (CLI::App* listing : {list, version, last}) addFlag(listing, "--json", options->json, "Write JSON");
    CLI::App* backup = addCommand(family, action, "backup", "Back a database up", options, backUp);
    addOption(backup, "DB", options->name, "The database", {.required = true});
    addOption(backup, "FILE", options->file, "The backup file, a path on the server's host",
              {.required = true});
    CLI::App* restore = addCommand(family, action, "restore",
                                   "Show the statement that restores a database; with --execute run it",
                                   options, showRestore);
    addOption(restore, "FILE", options->file, "The backup file, a path on the server's host",
              {.required = true});
    addOption(restore, "DB", options->name, "The database", {.required = true});
    addOption(restore, "--to", options->folder, "Folder on the server's host for the data files; required",
              {.type = "DIR"});
    addFlag(restore, "--execute", options->execute, "Run the statement, after asking");
    addYesOption(restore, options->yes);
}
