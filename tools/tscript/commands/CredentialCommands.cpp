// Command family `credentials`: user and password of a suite database.
#include <memory>
#include <string>

#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/Account.h"
#include "installation/Credentials.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

namespace {

struct CredentialOptions {
    std::string database;
    std::string user;
};

ExitCode setCredentials(const CredentialOptions& options) {
    const SuiteDatabase& database = suiteDatabase(options.database);
    requireStore();
    const Secret password = readSecret("Password of " + options.user, kLongestPassword);
    storeCredentials(database.name, options.user, password);
    writeNote(std::string("stored the credentials of ") + database.name);
    return ExitCode::kDone;
}

ExitCode testCredentials(const CredentialOptions& options) {
    const SuiteDatabase& database = suiteDatabase(options.database);
    requireStore();
    DBBase db(/*flag=*/false);
    if (!openAccount(db, database)) throw diagnoseDatabase(database.name).failure();
    if (usesWindowsAuthentication(database))  // the connection has not used the credentials
        if (const auto diagnosis = diagnoseStoredLogin(db, database)) throw diagnosis->failure();
    writeNote(std::string("the credentials of ") + database.name + " work");
    return ExitCode::kDone;
}

}  // namespace

void addCredentialCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<CredentialOptions>();
    CLI::App* family = addFamily(app, "credentials", "User and password of the suite's databases");
    CLI::App* set = addCommand(
        family, action, "set",
        "Store a database's user and password; the password is asked for, or read from standard input",
        options, setCredentials);
    addOption(set, "DB", options->database, "The database", {.required = true});
    addOption(set, "--user", options->user, "The login's name", {.type = "USER", .required = true});
    CLI::App* test =
        addCommand(family, action, "test", "Connect with a database's credentials and run a probe", options,
                   testCredentials);
    addOption(test, "DB", options->database, "The database", {.required = true});
}
