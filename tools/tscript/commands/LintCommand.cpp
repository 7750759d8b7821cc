// Command `lint`: checks a package's plain text.
#include <algorithm>
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "package/ParameterListing.h"
#include "packing/PlainPackage.h"

namespace {

struct LintOptions {
    std::string plain;
    bool json = false;
};

using Findings = std::vector<PackageFinding>;

// Warnings and remarks in the order of their lines.
Findings warningsOf(const PackageCheck& check) {
    Findings all = check.warnings;
    all.insert(all.end(), check.remarks.begin(), check.remarks.end());
    std::stable_sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.line < b.line; });
    return all;
}

Json listJson(const Findings& findings) {
    Json list = Json::array();
    for (const PackageFinding& finding : findings) {
        Json entry;
        if (finding.line > 0) entry["line"] = finding.line;
        if (finding.column > 0) entry["column"] = finding.column;
        if (!finding.word.empty()) entry["word"] = finding.word;
        entry["text"] = finding.text;
        list.push_back(entry);
    }
    return list;
}

void writeFindings(const LintOptions& options, const char* kind, const Findings& findings) {
    for (const PackageFinding& finding : findings)
        writeResult(options.plain + ": " + kind + ": " + textWithLine(finding));
}

ExitCode lint(const LintOptions& options) {
    const PackageCheck check = checkPlainPackage(options.plain);
    const Findings warnings = warningsOf(check);
    if (options.json) {
        Json result;
        result["file"] = options.plain;
        result["errors"] = listJson(check.errors);
        result["warnings"] = listJson(warnings);
        result["placeholders"] = check.placeholders;
        result["parameters"] = parametersJson(check.parameters);
        writeJson(result);
    } else {
        writeFindings(options, "error", check.errors);
        writeFindings(options, "warning", warnings);
        writeResult(options.plain + ": " + std::to_string(check.errors.size()) + " error(s), " +
                    std::to_string(warnings.size()) + " warning(s), " + std::to_string(check.placeholders) +
                    " placeholder(s)");
    }
    return check.errors.empty() ? ExitCode::kDone : ExitCode::kScriptFailed;
}

}  // namespace

void addLintCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<LintOptions>();
    CLI::App* command =
        addCommand(&app, action, "lint",
                   "Check a plain script; the exit code is 1 for errors, 0 for warnings only", options, lint);
    addOption(command, "PLAIN", options->plain, "The plain text of the script", {.required = true});
    addFlag(command, "--json", options->json, "Write JSON");
}
