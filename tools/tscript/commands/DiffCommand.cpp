// Command `diff`: compares two packages, or a package and a plain text.
#include <filesystem>
#include <fstream>
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/Installation.h"
#include "package/Inspection.h"
#include "package/PackageFile.h"
#include "package/PackageNames.h"
#include "package/TextDiff.h"

namespace {

constexpr std::uintmax_t kMostGiB = 1;

struct DiffOptions {
    std::string before;
    std::string after;
};

std::vector<PackageLine> plainLines(const std::string& file) {
    std::ifstream in = openPackageFile(file, kMostGiB);
    std::vector<PackageLine> lines;
    std::size_t number = 0;
    for (std::string text; std::getline(in, text);)
        if (++number; !text.empty()) lines.push_back({number, text});
    requireReadToEnd(in, file);
    return lines;
}

bool hasMarker(const std::vector<PackageLine>& lines) {
    for (const PackageLine& line : lines)
        if (line.text == "#START_SCRIPT#") return true;
    return false;
}

// `word` is the path of a package or of a plain text, or the name of a package. Empty lines do not count.
std::vector<PackageLine> linesOf(const std::string& word) {
    std::error_code ignored;
    std::string file = word;
    if (!std::filesystem::exists(word, ignored)) {
        checkScriptName(word);
        file = packageFile(packageNameInAnyCase(word)).string();
        if (!std::filesystem::exists(file, ignored))
            throw Failure(ExitCode::kUsage, "there is no file and no package '" + word + "'",
                          packageNameAdvice(word));
    }
    if (std::vector<PackageLine> lines = plainLines(file); hasMarker(lines)) return lines;
    requireStore();
    if (!inspectPackage(file).isAuthentic())
        throw Failure(ExitCode::kInstallation, file + " is neither a plain text nor an authentic package",
                      "tscript inspect " + file + " shows why.");
    return allLines(file);
}

ExitCode compare(const DiffOptions& options) {
    const std::string difference = unifiedDiff(linesOf(options.before), linesOf(options.after));
    if (difference.empty()) return ExitCode::kDone;
    writeResult("--- " + options.before + "\n+++ " + options.after + "\n" + difference);
    return ExitCode::kScriptFailed;
}

}  // namespace

void addDiffCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* command =
        addCommand(&app, action, "diff",
                   "Compare two packages, or a package and a plain text; the exit code is 1 if they differ",
                   options, compare);
    addOption(command, "A", options->before, "The name of a package, or the path of a package or plain text",
              {.required = true});
    addOption(command, "B", options->after, "The other one", {.required = true});
}
