// The databases of an installation: credentials, probe, catalogue tables, clock.
#include <string.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "VTPassword.h"
#include "installation/CheckList.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

namespace {

struct Component {
    const char* database;
    bool (*isInstalled)(const char* instance, std::string& errorText);
};

constexpr Component kComponents[] = {{"Dorvas", isPlatformDV},
                                     {"NQ2", isPlatformNQ2},
                                     {"WFEngine", isPlatformWFEngine},
                                     {"HistoryDB", isPlatformHistory},
                                     {"VTCloud", isPlatformVTCloud}};

struct CatalogueTable {
    const char* name;
    const char* sql;
};

constexpr CatalogueTable kTables[] = {
    {"ZpTscripts", "SELECT COUNT(*) FROM ZpTscripts WHERE 1 = 0"},
    {"ZpTscriptExec", "SELECT COUNT(*) FROM ZpTscriptExec WHERE 1 = 0"},
};

constexpr const char* kServerTime = "SELECT DATEDIFF(second, '20200101', GETUTCDATE())";
constexpr std::time_t kServerEpoch = 1577836800;  // 2020-01-01, so that the number fits for decades
constexpr long long kLargestDifference = 60;      // seconds

// Credentials are deciphered, so that a wrong key is told apart from a wrong password.
void checkCredentials(CheckList& list, const std::string& label, const SuiteDatabase& database) {
    std::vector<char> stored(8192);
    std::string problem;
    const std::string advice =
        std::string("Set them: tscript credentials set ") + database.name + " --user USER";
    if (!GetRegistryItemValue("", "Database", database.credentials, nullptr, stored.data(), problem))
        return list.fail(label + " credentials", ExitCode::kInstallation,
                         std::string("the store has no value Database.") + database.credentials, advice);
    std::array<char, 512> plain{};
    unsigned long size = plain.size();
    VTPassword cipher;
    cipher.putEncPwd(stored.data());
    const bool readable = cipher.decrypt(plain.data(), &size) != 0;
    explicit_bzero(plain.data(), plain.size());
    if (readable) return list.good(label + " credentials", "can be deciphered");
    list.fail(label + " credentials", ExitCode::kInstallation,
              hostlayer::cipherErrorText(cipher.getLastError()), advice);
}

void checkTables(CheckList& list, const std::string& label, DBBase& db) {
    for (const CatalogueTable& table : kTables) {
        int rows = 0;
        if (db.GetDBValueInt(table.sql, rows)) {
            list.good(label + " catalogue", table.name);
        } else {
            list.fail(label + " catalogue", ExitCode::kInstallation,
                      std::string(table.name) + " is missing or may not be read",
                      "Install the suite's schema in this database, or grant the login SELECT on the table.");
        }
    }
}

void checkClock(CheckList& list, const std::string& label, DBBase& db) {
    int seconds = 0;
    if (!db.GetDBValueInt(kServerTime, seconds))
        return list.warn(label + " clock", "the server does not tell its time",
                         "The debug log holds the driver's message.");
    const long long difference = static_cast<long long>(kServerEpoch) + seconds - std::time(nullptr);
    const std::string text = std::to_string(std::llabs(difference)) + " s apart";
    if (std::llabs(difference) <= kLargestDifference) return list.good(label + " clock", text);
    list.warn(label + " clock", text + "; the journal's times come from this host",
              "Let both hosts take their time from the same source (NTP).");
}

void checkDatabase(CheckList& list, const SuiteDatabase& database) {
    const std::string label = database.name;
    checkCredentials(list, label, database);
    if (list.failed(label + " credentials"))
        return list.skip(label + " connection", "not tried without credentials");
    DBBase db(false);
    std::string machine;
    std::string instance;
    const std::string log = sessionLogFile().string();
    const bool named = DVUtilLib("tscript", false).GetMachineName(machine, instance);
    if (!named || !db.GetAccountInfo(machine.c_str(), instance.c_str(), log.c_str(), database.name)) {
        const Diagnosis diagnosis = diagnoseDatabase(database.name);
        return list.fail(label + " connection", diagnosis.code, diagnosis.what, diagnosis.advice);
    }
    list.good(label + " connection", "the probe statement succeeds");
    checkTables(list, label, db);
    checkClock(list, label, db);
}

}  // namespace

// The library's lines about connections need the log folder; without it they would stand among the findings.
void checkDatabases(CheckList& list) {
    if (list.failed("store")) return;
    for (const char* needed : {"host name", "log folder", "key"})
        if (list.failed(needed)) return list.skip("databases", std::string("not tried without ") + needed);
    std::size_t installed = 0;
    std::string ignored;
    for (const Component& component : kComponents) {
        if (!component.isInstalled("", ignored)) continue;
        checkDatabase(list, suiteDatabase(component.database));
        ++installed;
    }
    if (installed == 0)
        list.warn("databases", "no component with a database is installed",
                  "A management server has 1 in it: tscript config set Base.nPLATTYPE 1");
}
