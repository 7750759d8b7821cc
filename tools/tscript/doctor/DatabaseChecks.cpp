// Checks of the databases: credentials, connection, query tool, schema, clock.
#include <string.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "VTPassword.h"
#include "doctor/CheckList.h"
#include "doctor/CheckSteps.h"
#include "installation/Account.h"
#include "installation/Components.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

namespace {

constexpr const char* kServerTime = "SELECT DATEDIFF(second, '20200101', GETUTCDATE())";
constexpr std::time_t kServerEpoch = 1577836800;  // 2020-01-01; the difference to it fits an int until 2088
// Differences of the clocks in seconds: the largest without a warning, and the largest without a failure.
// Kerberos refuses tickets at five minutes, and ages of runs in the journal are wrong by the difference.
constexpr long long kSmallDifference = 60;
constexpr long long kLargestDifference = 300;

// Decrypts the credentials: a wrong key is then reported as such, not as a refused login.
void checkCredentials(CheckList& list, const std::string& label, const SuiteDatabase& database) {
    std::vector<char> stored(8192);
    std::string problem;
    const std::string advice =
        std::string("Set them: tscript credentials set ") + database.name + " --user USER";
    if (!GetRegistryItemValue("", "Database", database.credentials, nullptr, stored.data(), problem))
        return list.addFailure(label + " credentials", ExitCode::kInstallation,
                               std::string("the store has no value Database.") + database.credentials,
                               advice);
    std::array<char, 512> plain{};
    unsigned long size = plain.size();
    VTPassword cipher;
    cipher.putEncPwd(stored.data());
    const bool isReadable = cipher.decrypt(plain.data(), &size) != 0;
    explicit_bzero(plain.data(), plain.size());
    if (isReadable) return list.addGood(label + " credentials", "can be decrypted");
    list.addFailure(label + " credentials", ExitCode::kInstallation,
                    hostlayer::cipherErrorText(cipher.getLastError()), advice);
}

// A missing value is left to the connection.
void checkServer(CheckList& list, const std::string& label, const SuiteDatabase& database) {
    if (const std::optional<Diagnosis> fault = serverNameFault(database))
        list.addFailure(label + " server", fault->code, fault->what, fault->advice);
}

std::string firstCause(const DBBase& db) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    return causes.empty() ? "no reason is known" : causes.front().text;
}

void checkClock(CheckList& list, const std::string& label, DBBase& db) {
    int seconds = 0;
    if (!db.GetDBValueInt(kServerTime, seconds))
        return list.addFailure(label + " clock", ExitCode::kConnection,
                               "the server did not return its time: " + firstCause(db),
                               "Run tscript doctor again.");
    const long long difference = static_cast<long long>(kServerEpoch) + seconds - std::time(nullptr);
    const std::string text = std::to_string(std::llabs(difference)) + " s apart";
    if (std::llabs(difference) <= kSmallDifference) return list.addGood(label + " clock", text);
    const std::string effect = text + "; the journal records the time of this host";
    const char* advice = "Synchronise both hosts with the same time source (NTP).";
    std::llabs(difference) > kLargestDifference
        ? list.addFailure(label + " clock", ExitCode::kInstallation, effect, advice)
        : list.addWarning(label + " clock", effect, advice);
}

// With Windows authentication most operations do not use the stored login.
void checkStoredLogin(CheckList& list, const std::string& label, DBBase& db, const SuiteDatabase& database) {
    const std::optional<Diagnosis> diagnosis = diagnoseStoredLogin(db, database);
    if (!diagnosis) return list.addGood(label + " stored login", "works");
    list.addWarning(label + " stored login", diagnosis->what,
                    "Backups, database lists and the server's version need it. " + diagnosis->advice);
}

void checkDatabase(CheckList& list, const SuiteDatabase& database) {
    const std::string label = database.name;
    checkServer(list, label, database);
    checkCredentials(list, label, database);
    if (list.hasFailed(label + " server"))
        return list.addSkipped(label + " connection", "not tried with this server");
    checkEncryption(list, database);
    if (list.hasFailed(label + " credentials"))
        return list.addSkipped(label + " connection", "not tried without credentials");
    DBBase db(/*flag=*/false);
    if (!openAccount(db, database)) {
        const Diagnosis diagnosis = diagnoseDatabase(database.name);
        return list.addFailure(label + " connection", diagnosis.code, diagnosis.what, diagnosis.advice);
    }
    list.addGood(label + " connection", "the probe statement succeeds");
    if (usesWindowsAuthentication(database)) checkStoredLogin(list, label, db, database);
    checkToolRun(list, db, database);
    checkSchema(list, db, database);
    checkClock(list, label, db);
}

}  // namespace

// Without the log folder the library would print its log lines among the findings.
void checkDatabases(CheckList& list) {
    if (list.hasFailed("store")) return;
    checkComponents(list);
    for (const char* needed : {"host name", "log folder", "key"})
        if (list.hasFailed(needed))
            return list.addSkipped("databases", std::string("not tried without ") + needed);
    for (const SuiteDatabase* database : installedDatabases()) checkDatabase(list, *database);
}
