// Command family `key`: the key file of packages and credentials.
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "HostSetup.h"
#include "PackageSeal.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/CipherKey.h"
#include "installation/Installation.h"

namespace {

struct KeyOptions {
    std::string file;
    bool isSigning = false;
};

std::string configuredKeyFile() {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    const auto file = store.settings.find("cipherKeyFile");
    if (file != store.settings.end() && !file->second.empty()) return file->second;
    throw Failure(ExitCode::kInstallation, hostlayer::cipherErrorText(VTPassword::kKeyNotConfigured));
}

// The public key is the result: it belongs in the store's trustedSigners. It is printed once, so a key whose
// public half was not printed is deleted.
ExitCode createSigningKey(const std::string& file) {
    if (file.empty()) throw Failure(ExitCode::kUsage, "name the file of the signing key");
    std::string problem;
    const std::string publicKey = hostlayer::createSigningKeyFile(file, problem);
    if (publicKey.empty())
        throw Failure(ExitCode::kInstallation, "the signing key cannot be created: " + problem);
    writeResult(publicKey);
    if (std::fflush(resultStream()) != 0) {
        unlink(file.c_str());
        throw Failure(ExitCode::kInstallation, "the public key cannot be written to standard output",
                      "The signing key was deleted again, because nothing shows its public key later.");
    }
    writeNote("created the signing key " + file + "; its public key is above");
    return ExitCode::kDone;
}

ExitCode createKey(const KeyOptions& options) {
    if (options.isSigning) return createSigningKey(options.file);
    if (options.file.empty()) requireStore();
    const std::string target = options.file.empty() ? configuredKeyFile() : options.file;
    createKeyFile(target);
    writeNote("created the key " + target);
    return ExitCode::kDone;
}

}  // namespace

void addKeyCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<KeyOptions>();
    CLI::App* family = addFamily(app, "key", "The key that packages and credentials are encrypted with");
    CLI::App* create = addCommand(family, action, "create",
                                  "Create a key file; an existing one is left unchanged", options, createKey);
    addFlag(create, "--signing", options->isSigning,
            "Create a key that signs packages, and print its public key");
    addOption(create, "FILE", options->file, "The key file (default: the store's cipherKeyFile)");
}
