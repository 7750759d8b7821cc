// Command `pack`: encrypts a plain script into a package.
#include <filesystem>
#include <limits>
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/Installation.h"
#include "packing/Packing.h"

namespace {

struct PackOptions {
    std::string plain;
    std::string target;
    SealOptions seal;
};

// In the Scripts folder, under a name that the script can be run by.
std::string defaultTarget(const std::string& plain) {
    const std::string name = std::filesystem::path(plain).stem();
    checkScriptName(name);
    return packageFile(name);
}

ExitCode pack(const PackOptions& options) {
    requireStore();
    const std::string target = options.target.empty() ? defaultTarget(options.plain) : options.target;
    packFile(options.plain, target, options.seal);
    writeNote("packed " + target);
    return ExitCode::kDone;
}

}  // namespace

void addPackCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<PackOptions>();
    CLI::App* command =
        addCommand(&app, action, "pack", "Encrypt and seal a plain script as a package", options, pack);
    addOption(command, "PLAIN", options->plain, "The plain text of the script", {.required = true});
    addOption(command, "-o,--output", options->target,
              "The package (default: the script's name in the installation's Scripts folder)",
              {.type = "FILE"});
    addOption(command, "--sign", options->seal.signingKey, "Sign the package with this key",
              {.type = "FILE"});
    addNumber(command, "--package-version", options->seal.version,
              "Version number that the seal holds (default: the seconds since 1970)",
              NumberRules<std::uint64_t>{.type = "N",
                                         .least = 1,
                                         .most = std::numeric_limits<std::uint64_t>::max(),
                                         .defaultInHelp = false});
}
