// Command family `sandbox`: a sample installation with its own server.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "commands/Commands.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "sandbox/SampleInstallation.h"

namespace {

struct SandboxOptions {
    std::string folder;
    int port = 0;
    bool yes = false;
    bool json = false;
    std::string database = "dorvas";
};

std::string defaultFolder() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') return std::string(data) + "/zephra-sandbox";
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return std::string(home) + "/.local/share/zephra-sandbox";
    throw Failure(ExitCode::kUsage, "there is no home folder for the sandbox", "Name a folder with --dir.");
}

SandboxFolder folderOf(const SandboxOptions& options) {
    return SandboxFolder(options.folder.empty() ? defaultFolder() : options.folder);
}

// Folder of an existing sandbox: the one that --dir names, else the one whose store is in force, else the
// default.
SandboxFolder existingFolder(const SandboxOptions& options) {
    const char* store = std::getenv("ZEPHRA_REGISTRY");
    if (options.folder.empty() && store != nullptr && *store != '\0') {
        std::error_code ignored;
        const SandboxFolder folder(std::filesystem::absolute(store, ignored).parent_path());
        const bool isItsStore = std::filesystem::equivalent(store, folder.store(), ignored);
        if (isItsStore && folder.isSandbox()) return folder;
    }
    return folderOf(options);
}

std::string describe(const SandboxFolder& folder, const RunningServer& server) {
    return "running on " + addressOf(server.port) + " (process " + std::to_string(server.pid) + "), folder " +
           folder.path().string();
}

[[noreturn]] void throwNoSandbox(const SandboxFolder& folder) {
    throw Failure(ExitCode::kInstallation, folder.path().string() + " holds no sample installation",
                  "tscript sandbox up creates one.");
}

// Quotes text as one word of a shell command.
std::string shellQuoted(const std::string& text) {
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

ExitCode ensureUp(const SandboxFolder& folder, int port) {
    setenv("ZEPHRA_REGISTRY", folder.store().c_str(), 1);
    std::optional<RunningServer> server = findServer(folder);
    if (server && !folder.isComplete()) {  // left behind by an interrupted start
        stopServer(folder, *server);
        server.reset();
    }
    if (server && port != 0 && port != server->port)
        throw Failure(ExitCode::kUsage, "the server is running on port " + std::to_string(server->port),
                      "To change its port, stop it first: tscript sandbox down");
    if (!server) server = startSampleInstallation(folder, port);
    writeNote(describe(folder, *server));
    writeResult("export ZEPHRA_REGISTRY=" + shellQuoted(folder.store()));
    return ExitCode::kDone;
}

ExitCode up(const SandboxOptions& options) {
    const SandboxFolder folder = folderOf(options);
    const SandboxLock lock(folder);
    return ensureUp(folder, options.port);
}

bool stopIfRunning(const SandboxFolder& folder) {
    if (!folder.isSandbox()) return false;
    const SandboxLock lock(folder);
    const std::optional<RunningServer> server = findServer(folder);
    if (server) stopServer(folder, *server);
    return server.has_value();
}

ExitCode down(const SandboxOptions& options) {
    writeNote(stopIfRunning(existingFolder(options)) ? "stopped" : "not running");
    return ExitCode::kDone;
}

ExitCode reset(const SandboxOptions& options) {
    const SandboxFolder folder = existingFolder(options);
    if (!folder.isSandbox()) throwNoSandbox(folder);
    confirm(options.yes, "The databases, packages, logs, key and password in " + folder.path().string() +
                             " will be created again; their contents will be lost.");
    writeNote("clearing " + folder.path().string() + ", except its backups");
    const SandboxLock lock(folder);
    if (const std::optional<RunningServer> server = findServer(folder)) stopServer(folder, *server);
    folder.markIncomplete();
    return ensureUp(folder, options.port);
}

ExitCode shell(const SandboxOptions& options) {
    const SandboxFolder folder = existingFolder(options);
    const std::optional<RunningServer> server = findServer(folder);
    if (!server || !folder.isComplete())
        throw Failure(ExitCode::kConnection, "the sandbox is not running", "Start it: tscript sandbox up");
    const Secret password = readSandboxPassword(folder);
    setenv("SQLCMDPASSWORD", password.text().c_str(), 1);
    setenv("SQLCMD_ENCRYPT", "verify", 1);
    setenv("SQLCMD_NO_PROGRAMS", "1", 1);
    setenv("SQLCMD_CA_FILE", folder.certificate().c_str(), 1);
    const std::string program = sandboxSqlcmd().string();
    const std::string address = addressOf(server->port);
    execl(program.c_str(), "sqlcmd", "-S", address.c_str(), "-U", kSandboxLogin, "-d",
          options.database.c_str(), static_cast<char*>(nullptr));
    throw Failure(ExitCode::kInstallation, program + " cannot be started: " + std::strerror(errno));
}

Json jsonOf(const SandboxFolder& folder, const std::optional<RunningServer>& server) {
    Json value = {{"running", server.has_value()}};
    value["server"] = server ? Json(addressOf(server->port)) : Json();
    value["process"] = server ? Json(server->pid) : Json();
    value["folder"] = folder.path().string();
    value["store"] = folder.store().string();
    return value;
}

ExitCode status(const SandboxOptions& options) {
    const SandboxFolder folder = existingFolder(options);
    const std::optional<RunningServer> server = findServer(folder);
    if (!folder.isComplete()) throwNoSandbox(folder);
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
    CLI::App* family = addFamily(app, "sandbox", "A sample installation with a local SQL server");
    addOption(
        family, "--dir", options->folder,
        "Folder of the sample installation (default: the one whose store is in use; for up, or if there is "
        "none, zephra-sandbox in the user's data folder)",
        {.type = "DIR"});
    CLI::App* start =
        addCommand(family, action, "up",
                   "Create the sample installation, unless it exists, and start its server", options, up);
    addNumber(start, "--port", options->port, "The server's port (default: a free one)",
              {.type = "PORT", .least = 0, .most = 65535, .defaultInHelp = false});
    addCommand(family, action, "down", "Stop the server; the folder stays", options, down);
    CLI::App* state =
        addCommand(family, action, "status", "Show whether the server runs, and where", options, status);
    addFlag(state, "--json", options->json, "Write JSON");
    CLI::App* again =
        addCommand(family, action, "reset",
                   "Create the sample installation anew and start its server; backups stay", options, reset);
    addYesOption(again, options->yes);
    CLI::App* client =
        addCommand(family, action, "shell", "Run sqlcmd on the server, with the terminal or standard input",
                   options, shell);
    addOption(client, "--db", options->database, "The database (default: dorvas)", {.type = "DB"});
}
