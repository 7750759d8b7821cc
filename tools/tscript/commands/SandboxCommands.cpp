// sandbox: a sample installation with a server of its own.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <vector>

#include "commands/Commands.h"
#include "commands/Credentials.h"
#include "commands/Key.h"
#include "commands/Pack.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Installation.h"
#include "sandbox/SandboxFolder.h"
#include "sandbox/SandboxServer.h"
#include "system/Spawn.h"

namespace {

namespace fs = std::filesystem;

struct SandboxOptions {
    std::string folder;
    int port = 0;
    bool yes = false;
    bool json = false;
    std::string database = "dorvas";
};

constexpr const char* kLogin = "sa";

std::string defaultFolder() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') return std::string(data) + "/zephra-sandbox";
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return std::string(home) + "/.local/share/zephra-sandbox";
    throw Failure(ExitCode::kUsage, "there is no home folder to make the sandbox in",
                  "Name a folder with --dir.");
}

SandboxFolder folderOf(const SandboxOptions& options) {
    return SandboxFolder(options.folder.empty() ? defaultFolder() : options.folder);
}

Secret readPassword(const SandboxFolder& folder) {
    Secret password(256);
    std::ifstream in(folder.passwordFile());
    if (!std::getline(in, password.text()))
        throw Failure(ExitCode::kInstallation, folder.passwordFile().string() + " cannot be read");
    return password;
}

void loadSchema(const SandboxFolder& folder, int port, const Secret& password) {
    const std::string log = (folder.logs() / "schema.log").string();
    const int code = runChild({(programFolder() / "sqlcmd").string(), "-b", "-S",
                               "127.0.0.1," + std::to_string(port), "-U", kLogin, "-i", "load.sql"},
                              {{"SQLCMDPASSWORD=" + password.text()}, log, false, sampleFolder() / "schema"});
    if (code == 0) return;
    std::ifstream in(log);
    const std::string words((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    throw Failure(ExitCode::kInstallation, "the sample's schema cannot be loaded:\n" + words);
}

void packSamples(const SandboxFolder& folder) {
    for (const fs::directory_entry& plain : fs::directory_iterator(sampleFolder() / "packages"))
        packFile(plain.path(), folder.scripts() / (plain.path().stem().string() + ".sql"));
}

// Everything but the server; the folder counts as complete only at the end, so that what a failure leaves is
// made anew the next time.
void furnish(const SandboxFolder& folder, const RunningServer& server) {
    const Secret password = readPassword(folder);
    folder.writeStore(server.port);
    makeKey(folder.key());
    for (const char* database : {"Dorvas", "NQ2"}) storeCredentials(database, kLogin, password);
    loadSchema(folder, server.port, password);
    packSamples(folder);
    folder.markComplete();
}

void adoptPort(int port) {
    for (const char* value : {"sINSTANCE", "sNQ2INSTANCE"})
        setDatabaseValue(value, "127.0.0.1," + std::to_string(port));
}

RunningServer bringUp(const SandboxFolder& folder, int port) {
    const bool fresh = !folder.isComplete();
    if (fresh) folder.make();
    const RunningServer server = startServer(folder, port);
    try {
        fresh ? furnish(folder, server) : adoptPort(server.port);
    } catch (...) {
        stopServer(folder, server);
        throw;
    }
    return server;
}

// As SQL Server people write it.
std::string addressOf(const RunningServer& server) {
    return "127.0.0.1," + std::to_string(server.port);
}

std::string describe(const SandboxFolder& folder, const RunningServer& server) {
    return "running on " + addressOf(server) + " (process " + std::to_string(server.pid) + "), folder " +
           folder.path().string();
}

// As one word of a shell.
std::string quoted(const std::string& text) {
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

// A server that somebody's broken-off start left in an unfinished folder is of no use.
ExitCode ensureUp(const SandboxFolder& folder, int port) {
    setenv("ZEPHRA_REGISTRY", folder.store().c_str(), 1);
    std::optional<RunningServer> server = findServer(folder);
    if (server && !folder.isComplete()) {
        stopServer(folder, *server);
        server.reset();
    }
    if (!server) server = bringUp(folder, port);
    writeNote(describe(folder, *server));
    writeResult("export ZEPHRA_REGISTRY=" + quoted(folder.store()));
    return ExitCode::kDone;
}

ExitCode up(const SandboxOptions& options) {
    const SandboxFolder folder = folderOf(options);
    const SandboxLock lock(folder);
    return ensureUp(folder, options.port);
}

bool stopIfRunning(const SandboxFolder& folder) {
    if (!folder.isOurs()) return false;
    const SandboxLock lock(folder);
    const std::optional<RunningServer> server = findServer(folder);
    if (server) stopServer(folder, *server);
    return server.has_value();
}

ExitCode down(const SandboxOptions& options) {
    writeNote(stopIfRunning(folderOf(options)) ? "stopped" : "not running");
    return ExitCode::kDone;
}

ExitCode reset(const SandboxOptions& options) {
    const SandboxFolder folder = folderOf(options);
    if (!folder.isOurs())
        throw Failure(ExitCode::kInstallation, folder.path().string() + " holds no sample installation",
                      "tscript sandbox up makes one.");
    confirm(options.yes, "The databases, packages, logs, key and password in " + folder.path().string() +
                             " are made anew; what they hold now is lost.");
    const SandboxLock lock(folder);
    if (const std::optional<RunningServer> server = findServer(folder)) stopServer(folder, *server);
    folder.markUnfinished();
    return ensureUp(folder, options.port);
}

ExitCode shell(const SandboxOptions& options) {
    const SandboxFolder folder = folderOf(options);
    const std::optional<RunningServer> server = findServer(folder);
    if (!server || !folder.isComplete())
        throw Failure(ExitCode::kConnection, "the sandbox is not running", "Start it: tscript sandbox up");
    const Secret password = readPassword(folder);
    setenv("SQLCMDPASSWORD", password.text().c_str(), 1);
    const std::string program = (programFolder() / "sqlcmd").string();
    const std::string address = addressOf(*server);
    execl(program.c_str(), "sqlcmd", "-S", address.c_str(), "-U", kLogin, "-d", options.database.c_str(),
          static_cast<char*>(nullptr));
    throw Failure(ExitCode::kInstallation, program + " cannot be started: " + std::strerror(errno));
}

Json jsonOf(const SandboxFolder& folder, const std::optional<RunningServer>& server) {
    Json value = {{"running", server.has_value()}};
    value["server"] = server ? Json(addressOf(*server)) : Json();
    value["process"] = server ? Json(server->pid) : Json();
    value["folder"] = folder.path().string();
    value["store"] = folder.store().string();
    return value;
}

ExitCode status(const SandboxOptions& options) {
    const SandboxFolder folder = folderOf(options);
    const std::optional<RunningServer> server = findServer(folder);
    if (!folder.isComplete())
        throw Failure(ExitCode::kInstallation, folder.path().string() + " holds no sample installation",
                      "tscript sandbox up makes one.");
    if (options.json) {
        writeJson(jsonOf(folder, server));
    } else {
        writeResult(server ? describe(folder, *server) : "stopped, folder " + folder.path().string());
    }
    return server ? ExitCode::kDone : ExitCode::kConnection;
}

}  // namespace

void addSandboxCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<SandboxOptions>();
    CLI::App* family = app.add_subcommand("sandbox", "A sample installation with a local SQL server");
    family->require_subcommand(1);
    family
        ->add_option("--dir", options->folder,
                     "Its folder (default: zephra-sandbox in the user's data folder)")
        ->type_name("DIR");
    CLI::App* start =
        addCommand(family, action, "up", "Make it if need be and start the server", options, up);
    start->add_option("--port", options->port, "The server's port (default: a free one)")
        ->type_name("PORT")
        ->check(CLI::Range(0, 65535));
    addCommand(family, action, "down", "Stop the server; the folder stays", options, down);
    addCommand(family, action, "status", "Tell whether the server runs, and where", options, status)
        ->add_flag("--json", options->json, "Write JSON");
    CLI::App* anew = addCommand(family, action, "reset", "Make it anew and start the server; backups stay",
                                options, reset);
    addConsent(anew, options->yes);
    CLI::App* client = addCommand(family, action, "shell",
                                  "sqlcmd at the server, on the terminal or standard input", options, shell);
    client->add_option("--db", options->database, "The database (dorvas)")->type_name("DB");
}
