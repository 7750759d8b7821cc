// Command `repack`: encrypts packages with another key.
#include <filesystem>
#include <memory>
#include <vector>

#include "commands/Commands.h"
#include "console/Console.h"
#include "packing/Repacking.h"

namespace {

struct RepackOptions {
    std::string oldKey;
    std::string newKey;
    std::vector<std::string> files;
    bool seal = false;
};

ExitCode repack(const RepackOptions& options) {
    std::error_code ignored;
    if (!options.seal && std::filesystem::equivalent(options.oldKey, options.newKey, ignored))
        throw Failure(ExitCode::kUsage, "the old and the new key are the same file");
    KeyedCipher from(options.oldKey);
    KeyedCipher to(options.newKey);
    std::size_t unchangedFiles = 0;
    for (const std::string& file : options.files) {
        try {
            const Repacked result =
                repackFile(file, from, to, options.seal ? Unsealed::kIsSealed : Unsealed::kStays);
            writeNote(result == Repacked::kDone ? "repacked " + file : file + " has the new key already");
        } catch (const Failure& failure) {
            writeNote("tscript: " + file + " was left as it is: " + failure.what());
            ++unchangedFiles;
        }
    }
    if (unchangedFiles == 0) return ExitCode::kDone;
    throw Failure(ExitCode::kInstallation,
                  std::to_string(unchangedFiles) + " of " + std::to_string(options.files.size()) +
                      " file(s) were not repacked",
                  "Keep the old key until every package has the new one.");
}

}  // namespace

void addRepackCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RepackOptions>();
    CLI::App* command = addCommand(
        &app, action, "repack",
        "Encrypt packages with another key and renew their seals; one that is not authentic is reported and "
        "left unchanged",
        options, repack);
    addOption(command, "--old-key", options->oldKey, "Key file that the packages are encrypted with",
              {.type = "FILE", .required = true});
    addOption(command, "--new-key", options->newKey, "Key file to encrypt them with",
              {.type = "FILE", .required = true});
    addFlag(command, "--seal", options->seal,
            "Seal packages that have no seal, too; the keys may be the same file");
    addOption(command, "FILE", options->files, "The packages", {.required = true});
}
