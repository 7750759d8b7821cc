#include "sandbox/SampleInstallation.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "console/Outcome.h"
#include "installation/CipherKey.h"
#include "installation/Credentials.h"
#include "installation/Installation.h"
#include "packing/Packing.h"
#include "system/ChildProcess.h"
#include "system/FolderListing.h"

namespace {

namespace fs = std::filesystem;

void loadSchema(const SandboxFolder& folder, int port, const Secret& password) {
    const std::string log = (folder.logs() / "schema.log").string();
    const int code = runChild(
        {sandboxSqlcmd().string(), "-b", "-S", addressOf(port), "-U", kSandboxLogin, "-i", "load.sql"},
        {.environment = {"SQLCMDPASSWORD=" + password.text(), "SQLCMD_ENCRYPT=verify",
                         "SQLCMD_CA_FILE=" + folder.certificate().string()},
         .outputFile = log,
         .workingDirectory = sampleFolder() / "schema"});
    if (code == 0) return;
    std::ifstream in(log);
    const std::string message((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    throw Failure(ExitCode::kInstallation, "the sample's schema cannot be loaded:\n" + message);
}

void packSamples(const SandboxFolder& folder) {
    for (const fs::path& plain : pathsIn(sampleFolder() / "packages", ".txt"))
        packFile(plain, folder.scripts() / (plain.stem().string() + ".sql"), /*options=*/{});
}

// Creates everything but the server. The folder is marked as complete at the end: after a failure the next
// call starts again.
void createInstallation(const SandboxFolder& folder, const RunningServer& server) {
    const Secret password = readSandboxPassword(folder);
    folder.writeStore(server.port);
    createKeyFile(folder.key());
    for (const char* database : {"Dorvas", "NQ2"}) storeCredentials(database, kSandboxLogin, password);
    loadSchema(folder, server.port, password);
    packSamples(folder);
    folder.markComplete();
}

void storePort(int port) {
    for (const char* value : {"sINSTANCE", "sNQ2INSTANCE"}) setDatabaseValue(value, addressOf(port));
}

}  // namespace

Secret readSandboxPassword(const SandboxFolder& folder) {
    constexpr std::size_t kCapacity = 256;
    Secret password(kCapacity);
    std::ifstream in(folder.passwordFile());
    if (!std::getline(in, password.text()))
        throw Failure(ExitCode::kInstallation, folder.passwordFile().string() + " cannot be read");
    return password;
}

RunningServer startSampleInstallation(const SandboxFolder& folder, int port) {
    const bool isNew = !folder.isComplete();
    if (isNew) folder.create();
    const RunningServer server = startServer(folder, port);
    try {
        isNew ? createInstallation(folder, server) : storePort(server.port);
    } catch (...) {
        stopServer(folder, server);
        throw;
    }
    return server;
}
