// Command family `key`: the key file of packages and credentials.
#include <memory>

#include "HostSetup.h"
#include "VTPassword.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/CipherKey.h"
#include "installation/Installation.h"

namespace {

struct KeyOptions {
    std::string file;
};

std::string configuredKeyFile() {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    const auto file = store.settings.find("cipherKeyFile");
    if (file != store.settings.end() && !file->second.empty()) return file->second;
    throw Failure(ExitCode::kInstallation, hostlayer::cipherErrorText(VTPassword::kKeyNotConfigured));
}

ExitCode createKey(const KeyOptions& options) {
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
    addCommand(family, action, "create", "Create a key file; an existing one is left unchanged", options,
               createKey)
        ->add_option("FILE", options->file, "The key file (default: the store's cipherKeyFile)");
}
