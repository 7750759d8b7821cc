// key: the cipher's key file.
#include <memory>

#include "HostSetup.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "commands/Key.h"
#include "console/Console.h"
#include "installation/Installation.h"

namespace {

std::string configuredKeyFile() {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    const auto file = store.settings.find("cipherKeyFile");
    if (file != store.settings.end() && !file->second.empty()) return file->second;
    throw Failure(ExitCode::kInstallation, hostlayer::cipherErrorText(VTPassword::kKeyNotConfigured));
}

ExitCode createKey(const std::string& file) {
    if (file.empty()) requireStore();
    const std::string target = file.empty() ? configuredKeyFile() : file;
    makeKey(target);
    writeNote("made the key " + target);
    return ExitCode::kDone;
}

}  // namespace

void makeKey(const std::string& file) {
    std::string problem;
    if (!hostlayer::createCipherKeyFile(file, problem))
        throw Failure(ExitCode::kInstallation, "the key cannot be made: " + problem);
}

void addKeyCommands(CLI::App& app, Action& action) {
    const auto file = std::make_shared<std::string>();
    CLI::App* family = app.add_subcommand("key", "The key that packages and credentials are enciphered with");
    family->require_subcommand(1);
    CLI::App* create = family->add_subcommand("create", "Make a new key file; one that exists is left alone");
    create->add_option("FILE", *file, "The key file (default: the store's cipherKeyFile)");
    create->callback([&action, file] { action = [file] { return createKey(*file); }; });
}
