// Command `doctor`: checks the installation and gives advice on what to repair.
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "doctor/CheckList.h"
#include "package/PackageChecks.h"

namespace {

struct DoctorOptions {
    bool json = false;
};

struct HealthText {
    const char* name;
    const char* column;
};

constexpr HealthText textOf(Health health) {
    switch (health) {
        case Health::kGood:
            return {"ok", "ok       "};
        case Health::kWarning:
            return {"warning", "warning  "};
        case Health::kFailed:
            return {"failed", "FAILED   "};
        case Health::kSkipped:
            break;
    }
    return {"skipped", "skipped  "};
}

// Indents the lines after the first one to the column of the check names.
std::string alignedDetail(const std::string& text) {
    std::string lines;
    for (const char c : text.substr(0, text.find_last_not_of('\n') + 1))
        lines += c == '\n' ? "\n         " : std::string(1, c);
    return lines;
}

void writeCheck(const Check& check) {
    writeResult(textOf(check.health).column + check.name + ": " + alignedDetail(check.detail));
    if (!check.advice.empty()) writeResult("         -> " + alignedDetail(check.advice));
}

Json toJson(const CheckList& list) {
    Json checks = Json::array();
    for (const Check& check : list.checks()) {
        Json entry;
        entry["check"] = check.name;
        entry["result"] = textOf(check.health).name;
        entry["detail"] = check.detail;
        if (!check.advice.empty()) entry["advice"] = check.advice;
        if (check.health == Health::kFailed) entry["exitCode"] = static_cast<int>(check.code);
        checks.push_back(entry);
    }
    Json result;
    result["checks"] = checks;
    result["exitCode"] = static_cast<int>(list.exitCode());
    return result;
}

ExitCode checkAll(const DoctorOptions& options) {
    CheckList list;
    checkInstallation(list);
    checkDatabases(list);
    checkPackages(list);
    if (options.json) {
        writeJson(toJson(list));
    } else {
        for (const Check& check : list.checks()) writeCheck(check);
    }
    return list.exitCode();
}

}  // namespace

void addDoctorCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<DoctorOptions>();
    CLI::App* command =
        addCommand(&app, action, "doctor",
                   "Check store, key, folders, driver, query tool, databases and packages, and give advice",
                   options, checkAll);
    addFlag(command, "--json", options->json, "Write JSON");
}
