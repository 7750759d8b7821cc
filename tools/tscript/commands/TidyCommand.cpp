// Command `tidy`: deletes the files of runs that were killed.
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "commands/Commands.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "installation/Installation.h"
#include "installation/LeftOvers.h"

namespace {

struct TidyOptions {
    bool dryRun = false;
    bool yes = false;
};

ExitCode tidy(const TidyOptions& options) {
    requireStore();
    const std::vector<std::filesystem::path> files = findLeftOvers();
    for (const std::filesystem::path& file : files) writeResult(file.string());
    if (files.empty()) writeNote("no files of dead runs");
    if (files.empty() || options.dryRun) return ExitCode::kDone;
    confirm(options.yes, "These files of dead runs will be deleted.");
    for (const std::filesystem::path& file : files)
        if (unlink(file.c_str()) != 0 && errno != ENOENT)
            throw Failure(ExitCode::kInstallation,
                          file.string() + " cannot be deleted: " + std::strerror(errno));
    writeNote("deleted " + std::to_string(files.size()) + " file(s)");
    return ExitCode::kDone;
}

}  // namespace

void addTidyCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<TidyOptions>();
    CLI::App* command = addCommand(
        &app, action, "tidy", "List the files of runs that were killed, and delete them after confirmation",
        options, tidy);
    addFlag(command, "--dry-run", options->dryRun, "Only list the files");
    addYesOption(command, options->yes);
}
