// Command family `schema`: the database objects that script runs need.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "console/Confirmation.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Account.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "installation/SchemaObjects.h"
#include "sandbox/SandboxFolder.h"

namespace {

struct SchemaOptions {
    std::string database;
    bool yes = false;
    bool json = false;
};

using Objects = std::vector<SchemaObject>;

void connect(DBBase& db, const SchemaOptions& options) {
    requireStore();
    if (!openAccount(db, suiteDatabase(options.database))) throw diagnoseDatabase(options.database).failure();
}

void writeObjects(const SchemaOptions& options, const Objects& objects) {
    Json list = Json::array();
    std::string text;
    for (const SchemaObject& object : objects) {
        list.push_back({{"object", object.name}, {"state", nameOf(object.state)}, {"detail", object.detail}});
        std::string state = nameOf(object.state);
        state.resize(9, ' ');
        text += state + object.name + (object.detail.empty() ? "" : ": " + object.detail) + "\n";
    }
    if (options.json) return writeJson(list);
    writeResult(text);
}

bool has(const Objects& objects, ObjectState state) {
    return std::any_of(objects.begin(), objects.end(),
                       [&](const SchemaObject& object) { return object.state == state; });
}

ExitCode reportState(const SchemaOptions& options, const Objects& objects) {
    const std::string database = suiteDatabase(options.database).name;
    if (has(objects, ObjectState::kMissing))
        throw Failure(ExitCode::kInstallation, "objects that runs need are missing in " + database,
                      "tscript schema install " + database + " creates them.");
    if (has(objects, ObjectState::kDifferent))
        throw Failure(ExitCode::kInstallation, "objects of " + database + " are not what runs need",
                      "tscript does not change existing objects. Change them by hand.");
    return ExitCode::kDone;
}

ExitCode check(const SchemaOptions& options) {
    DBBase db(/*flag=*/false);
    connect(db, options);
    const Objects objects = inspectSchema(db);
    writeObjects(options, objects);
    return reportState(options, objects);
}

ExitCode install(const SchemaOptions& options) {
    DBBase db(/*flag=*/false);
    connect(db, options);
    Objects objects = inspectSchema(db);
    const std::string database = suiteDatabase(options.database).name;
    if (has(objects, ObjectState::kMissing)) {
        std::string names;
        for (const SchemaObject& object : objects)
            if (object.state == ObjectState::kMissing) names += " " + object.name;
        confirm(options.yes, "These objects will be created in " + database + ":" + names + ".");
        createMissing(db, database, objects, sampleFolder() / "schema" / "objects");
        objects = inspectSchema(db);
    }
    writeObjects(options, objects);
    return reportState(options, objects);
}

}  // namespace

void addSchemaCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<SchemaOptions>();
    CLI::App* family = addFamily(app, "schema", "The database objects that script runs need");
    CLI::App* checking = addCommand(
        family, action, "check", "Show which objects are missing or differ; changes nothing", options, check);
    CLI::App* installing =
        addCommand(family, action, "install", "Create the missing objects; existing ones are never changed",
                   options, install);
    for (CLI::App* command : {checking, installing}) {
        addOption(command, "DB", options->database, "The suite database", {.required = true});
        addFlag(command, "--json", options->json, "Write JSON: one object per database object");
    }
    addYesOption(installing, options->yes);
}
