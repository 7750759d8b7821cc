// Command `new`: writes the plain text of a new package.
#include <filesystem>
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/Installation.h"
#include "packing/Skeleton.h"
#include "system/ResultFile.h"

namespace {

struct NewOptions {
    std::string name;
    std::string target;
    std::string database = "Dorvas";
};

ExitCode writeSkeleton(const NewOptions& options) {
    checkScriptName(options.name);
    const std::string target = options.target.empty() ? options.name + ".txt" : options.target;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(target, ignored))
        throw Failure(ExitCode::kUsage, target + " exists", "Name another file with -o, or delete it.");
    ResultFile(target).write(packageSkeleton(options.name, suiteDatabase(options.database).name));
    writeNote("wrote " + target + "; next: tscript lint " + target + ", tscript pack " + target);
    return ExitCode::kDone;
}

}  // namespace

void addNewCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<NewOptions>();
    CLI::App* command = addCommand(&app, action, "new", "Write the plain text of a new script, with comments",
                                   options, writeSkeleton);
    addOption(command, "SCRIPT", options->name, "The script's name", {.required = true});
    addOption(command, "-o,--output", options->target, "The file (default: SCRIPT.txt in this folder)",
              {.type = "FILE"});
    addOption(command, "--db", options->database, "The database that it runs in (default: Dorvas)",
              {.type = "DB"});
}
