// pack: from plain text to an enciphered package; with it, what looks at packages.
#include <filesystem>
#include <memory>

#include "DVUtilities/commonFunc.h"
#include "commands/Commands.h"
#include "commands/Pack.h"
#include "console/Console.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "package/PlainPackage.h"
#include "system/ScratchFile.h"

namespace {

void report(const std::string& plain, const PackageCheck& check) {
    const auto tell = [&plain](const char* kind, const std::string& text) {
        writeNote(std::string(plain).append(": ").append(kind).append(text));
    };
    for (const PackageFinding& finding : check.warnings) tell("warning: ", lineText(finding));
    for (const PackageFinding& finding : check.errors) tell("", lineText(finding));
    if (!check.errors.empty())
        throw Failure(ExitCode::kUsage, plain + " cannot be packed",
                      "docs/package-format.md describes the form.");
}

// Under a name that the script can be run by.
std::string defaultTarget(const std::string& plain) {
    const std::string name = std::filesystem::path(plain).stem();
    checkScriptName(name);
    return packageFile(name);
}

}  // namespace

void packFile(const std::string& plain, const std::string& target) {
    report(plain, checkPlainPackage(plain));
    std::error_code ignored;
    if (std::filesystem::equivalent(plain, target, ignored))
        throw Failure(ExitCode::kUsage, "the package would take the place of its plain text " + plain,
                      "Name another file with -o.");
    ScratchFile enciphered(target);
    std::string error;
    if (!EncryptFile(plain.c_str(), enciphered.path().c_str(), error))
        throw Failure(ExitCode::kInstallation, plain + " cannot be enciphered: " + explainCipherError(error));
    enciphered.moveTo(target);
}

void addPackageCommands(CLI::App& app, Action& action) {
    struct Options {
        std::string plain;
        std::string target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* pack = app.add_subcommand("pack", "Encipher a plain script into a package");
    pack->add_option("PLAIN", options->plain, "The plain text of the script")->required();
    pack->add_option("-o,--output", options->target,
                     "The package (default: the script's name in the installation's Scripts folder)")
        ->type_name("FILE");
    pack->callback([&action, options] {
        action = [options] {
            requireStore();
            if (options->target.empty()) options->target = defaultTarget(options->plain);
            packFile(options->plain, options->target);
            writeNote("packed " + options->target);
            return ExitCode::kDone;
        };
    });
    addInspectCommand(app, action);
    addLintCommand(app, action);
    addRepackCommand(app, action);
}
