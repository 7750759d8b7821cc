// doctor: is the installation in order, and what is to be done if not?
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/CheckList.h"

namespace {

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

// Lines of a text below each other, behind the column of the results.
std::string indented(const std::string& text) {
    std::string lines;
    for (const char c : text.substr(0, text.find_last_not_of('\n') + 1))
        lines += c == '\n' ? "\n         " : std::string(1, c);
    return lines;
}

void writeCheck(const Check& check) {
    writeResult(textOf(check.health).column + check.name + ": " + indented(check.detail));
    if (!check.advice.empty()) writeResult("         -> " + indented(check.advice));
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
    result["exitCode"] = static_cast<int>(list.worst());
    return result;
}

ExitCode examine(bool json) {
    CheckList list;
    checkInstallation(list);
    checkDatabases(list);
    if (json) {
        writeJson(toJson(list));
    } else {
        for (const Check& check : list.checks()) writeCheck(check);
    }
    return list.worst();
}

}  // namespace

void addDoctorCommand(CLI::App& app, Action& action) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* doctor = app.add_subcommand(
        "doctor", "Check store, key, folders, driver, query tool and databases, and say what to do");
    doctor->add_flag("--json", *json, "Write JSON");
    doctor->callback([&action, json] { action = [json] { return examine(*json); }; });
}
