// db: the databases of a server, their backups and their restore.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "commands/Commands.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "system/Interrupt.h"
#include "system/ScratchFile.h"

namespace {

constexpr std::size_t kLongestPath = 900;  // the library's path buffers hold 1,024 bytes
constexpr std::size_t kLongestDatabaseName = 128;
constexpr std::size_t kLongestStatement = 4999;  // the library cuts there
constexpr std::string_view kRestoreBuilt = "Failed to execute Database Restore Command [";

struct DatabaseOptions {
    std::string account = "Dorvas";  // whose server and login are used
    std::string name;
    std::string file;
    std::string folder;
    bool execute = false;
    bool yes = false;
    bool json = false;
};

// Connects with the account's settings, or says why that fails.
void openAccount(DBBase& db, const std::string& account) {
    requireStore();
    std::string machine;
    std::string instance;
    const std::string log = sessionLogFile().string();
    const bool named = DVUtilLib("tscript", false).GetMachineName(machine, instance);
    if (named &&
        db.GetAccountInfo(machine.c_str(), instance.c_str(), log.c_str(), suiteDatabase(account).name))
        return;
    const Diagnosis diagnosis = diagnoseDatabase(account);
    throw Failure(diagnosis.code, diagnosis.what, diagnosis.advice);
}

[[noreturn]] void failQuery(const DBBase& db) {
    requireQueryTool();
    throw Failure(ExitCode::kScriptFailed, db.getErrorMsg(),
                  "The server's message stands in " + sessionLogFile().string() + ".");
}

// Names and paths reach the server as they stand, so what would end a T-SQL literal is refused here.
void checkForSql(const std::string& what, const std::string& text, std::size_t maximum) {
    const auto harmful = [](char c) { return c == '\'' || c == '%' || static_cast<unsigned char>(c) < 0x20; };
    checkQueryText(what, text, maximum);
    if (text.empty() || std::any_of(text.begin(), text.end(), harmful))
        throw Failure(ExitCode::kUsage,
                      what + " must not be empty or hold quotes, percent signs or control characters");
}

void checkServerPath(const std::string& what, const std::string& path) {
    checkForSql(what, path, kLongestPath);
    if (path.front() != '/')
        throw Failure(ExitCode::kUsage, what + " '" + path + "' is not absolute",
                      "It is a path on the server's host; write it from the root.");
}

// Ctrl-C ends the query tool, which would otherwise go on behind it. `advice`: what that leaves.
template <typename Work>
bool untilInterrupted(const std::string& advice, Work&& work) {
    const InterruptGuard guard;
    const bool done = work();
    if (!done && guard.interrupted()) throw Failure(ExitCode::kInterrupted, "interrupted", advice);
    return done;
}

ExitCode listDatabases(const DatabaseOptions& options) {
    DBBase db(false);
    openAccount(db, options.account);
    const std::vector<std::string> names = db.getDBList();
    if (names.empty()) failQuery(db);
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
    DBBase db(false);
    openAccount(db, options.account);
    const std::string version = db.checkSQLServerProductVersion();
    if (version == "-1") failQuery(db);
    if (options.json) {
        writeJson({{"account", suiteDatabase(options.account).name}, {"majorVersion", version}});
    } else {
        writeResult(version);
    }
    return ExitCode::kDone;
}

ExitCode showLastBackup(const DatabaseOptions& options) {
    checkForSql("the database name", options.name, kLongestDatabaseName);
    DBBase db(false);
    openAccount(db, options.account);
    std::array<char, 256> days{};
    std::array<char, 256> date{};
    if (!db.getLastBackUpInfo(options.name.c_str(), days.data(), date.data())) failQuery(db);
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
    checkForSql("the database name", options.name, kLongestDatabaseName);
    checkServerPath("the backup file", options.file);
    const std::filesystem::path file = options.file;
    DBBase db(false);
    openAccount(db, options.account);
    const bool done = untilInterrupted({}, [&] {
        return db.backUpDB(file.filename().c_str(), file.parent_path().c_str(), options.name.c_str());
    });
    if (!done) failQuery(db);
    writeResult(db.getErrorMsg());
    return ExitCode::kDone;
}

// Through the query tool, from a file, since a command line would cut it.
ExitCode executeRestore(DBBase& db, const DatabaseOptions& options, const std::string& statement) {
    if (statement.size() >= kLongestStatement)
        throw Failure(ExitCode::kUsage, "the statement is too long and may have been cut",
                      "Use shorter paths, or run the statement by hand.");
    confirm(options.yes, "The database " + options.name + " is replaced by the backup.");
    const ScratchFile file;
    const ScratchFile output;
    std::ofstream out(file.path(), std::ios::binary);
    out << statement << "\nGO\n";
    out.close();
    if (!out) throw Failure(ExitCode::kInstallation, file.path() + " cannot be written");
    const bool done = untilInterrupted("The database may be half restored; run the restore again.", [&] {
        return db.RunFileQuery(file.path().c_str(), output.path().c_str(), "MASTER", true, false);
    });
    writeNote(output.content());
    if (!done)
        throw Failure(ExitCode::kScriptFailed, "the restore failed", "The server's message stands above.");
    writeNote("restored " + options.name);
    return ExitCode::kDone;
}

// The library builds the statement, and fails with it as its message.
std::string restoreStatement(DBBase& db, const DatabaseOptions& options, const std::string& folder) {
    std::string_view built;
    std::size_t end = built.npos;
    const bool known = untilInterrupted({}, [&] {
        db.restoreDB(options.file.c_str(), folder.c_str(), options.name.c_str());
        built = db.getErrorMsg();
        end = built.rfind("].");
        return built.substr(0, kRestoreBuilt.size()) == kRestoreBuilt && end != built.npos;
    });
    if (!known) failQuery(db);
    return std::string(built.substr(kRestoreBuilt.size(), end - kRestoreBuilt.size()));
}

// The library leaves running it to the administrator.
ExitCode showRestore(const DatabaseOptions& options) {
    checkForSql("the database name", options.name, kLongestDatabaseName);
    checkServerPath("the backup file", options.file);
    const std::filesystem::path parent = std::filesystem::path(options.file).parent_path();
    std::string folder = options.folder.empty() ? parent.string() : options.folder;
    checkServerPath("the folder for the data files", folder);
    if (folder.back() != '/') folder += '/';
    DBBase db(false);
    openAccount(db, options.account);
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
    CLI::App* family = app.add_subcommand("db", "The databases of a server, their backups and their restore");
    family->require_subcommand(1);
    family
        ->add_option("--db", options->account, "The suite database whose server and login are used (Dorvas)")
        ->type_name("DB");

    CLI::App* list = addCommand(family, action, "list", "List the user databases", options, listDatabases);
    CLI::App* version =
        addCommand(family, action, "version", "Show the server's major version", options, showVersion);
    CLI::App* last = addCommand(family, action, "last-backup", "Show when a database was last backed up",
                                options, showLastBackup);
    last->add_option("DB", options->name, "The database")->required();
    for (CLI::App* listing : {list, version, last}) listing->add_flag("--json", options->json, "Write JSON");
    CLI::App* backup = addCommand(family, action, "backup", "Back a database up", options, backUp);
    backup->add_option("DB", options->name, "The database")->required();
    backup->add_option("FILE", options->file, "The backup file, a path on the server's host")->required();
    CLI::App* restore = addCommand(family, action, "restore",
                                   "Show the statement that restores a database; with --execute run it",
                                   options, showRestore);
    restore->add_option("FILE", options->file, "The backup file, a path on the server's host")->required();
    restore->add_option("DB", options->name, "The database")->required();
    restore->add_option("--to", options->folder, "Folder for the data files (default: the backup's)")
        ->type_name("DIR");
    restore->add_flag("--execute", options->execute, "Run the statement, after asking");
    addConsent(restore, options->yes);
}
