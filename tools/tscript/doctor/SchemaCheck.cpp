// Check of the database objects that script runs need, by statements that use them.
#include <string>
#include <string_view>
#include <vector>

#include "doctor/CheckSteps.h"
#include "doctor/ProbeFile.h"
#include "installation/ToolLimit.h"

namespace {

struct SchemaUse {
    const char* object;
    const char* purpose;
    const char* database;  // null: every database
    const char* sql;
    bool returnsNumber;  // that is above 0 if all is well
};

// The conditions are never true: no row is inserted or updated, and no identity value is used up.
constexpr SchemaUse kUses[] = {
    {"dbo.GetDateTime", "call", nullptr,
     "SELECT CASE WHEN dbo.GetDateTime(4102444800) > dbo.GetDateTime(0) THEN 1 ELSE 0 END", true},
    {"ZpTscripts", "read", nullptr,
     "SELECT id, type, name, auditLevel, creationTime, usage FROM ZpTscripts WHERE 1 = 0", false},
    {"ZpTscripts", "insert", nullptr, "INSERT ZpTscripts SELECT 100, '', 0, GETDATE(), '' WHERE 1 = 0",
     false},
    {"ZpTscripts", "update", nullptr, "UPDATE ZpTscripts SET usage = '' WHERE 1 = 0", false},
    {"ZpTscriptExec", "read", nullptr,
     "SELECT id, tsId, type, name, timeStart, timeEnd, status, inputParams, userId FROM ZpTscriptExec WHERE "
     "1 = 0",
     false},
    {"ZpTscriptExec", "insert", nullptr,
     "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId) SELECT id, "
     "type, name, GETDATE(), GETDATE(), 0, '', 0 FROM ZpTscripts WHERE 1 = 0",
     false},
    {"ZpTscriptExec", "update", nullptr,
     "UPDATE ZpTscriptExec SET timeEnd = GETDATE(), status = 0 WHERE 1 = 0", false},
    {"VT_GetSpParams", "call", nullptr, "EXEC VT_GetSpParams 'VT_GetSpParams'", false},
    {"app_plexum", "read row 2", "Dorvas", "SELECT COUNT(number) FROM dorvas..app_plexum WHERE id = 2", true},
    {"NQSetting", "read NQ2_DATABASE_ID", "NQ2",
     "SELECT COUNT(SettingValue) FROM NQSetting WHERE SettingName = 'NQ2_DATABASE_ID'", true},
};

constexpr const char* kMissingProcedures =
    "SELECT name FROM ZpTscripts WHERE type & 2 > 0 AND OBJECT_ID(name) IS NULL";
// The objects that `schema install` creates; the others belong to the suite's own data.
bool isInstallable(std::string_view object) {
    return object != "app_plexum" && object != "NQSetting";
}

std::string adviceFor(const SchemaUse& use, const SuiteDatabase& database) {
    if (!isInstallable(use.object))
        return "Restore the row from a backup of the suite's data, or grant the login the right that is "
               "missing.";
    return std::string("If it is missing: tscript schema install ") + database.name +
           ". If it differs: tscript schema check " + database.name +
           " shows how. Otherwise grant the login the right that is missing.";
}

// Repeats the statement through the query tool, whose output has the server's message. Empty if it succeeds.
std::string serverMessage(DBBase& db, const SuiteDatabase& database, const char* sql) {
    constexpr int kNoOptions = 0;
    const ProbeFile output(sessionLogFile().parent_path(), "");
    ToolLimit limit;
    if (db.RunStringQuery_TS(sql, output.path().c_str(), database.name, kNoOptions)) return {};
    return limit.expired() ? "the query tool " + ToolLimit::text() : output.content();
}

bool works(DBBase& db, const SchemaUse& use) {
    int number = 0;
    return use.returnsNumber ? db.GetDBValueInt(use.sql, number) && number > 0 : db.SetDBValue(use.sql);
}

// One finding for each object: the first statement on it that fails.
void checkUses(CheckList& list, const std::string& name, DBBase& db, const SuiteDatabase& database) {
    std::string_view failed;
    for (const SchemaUse& use : kUses) {
        const bool belongs = use.database == nullptr || use.database == std::string_view(database.name);
        if (!belongs || use.object == failed || works(db, use)) continue;
        failed = use.object;
        std::string message = serverMessage(db, database, use.sql);
        if (message.empty())
            message = use.returnsNumber ? "the row is missing or the value is wrong"
                                        : "the statement failed, and then succeeded through the query tool";
        list.addFailure(name, ExitCode::kInstallation,
                        std::string(use.object) + " (" + use.purpose + "): " + message,
                        adviceFor(use, database));
    }
}

void checkProcedures(CheckList& list, const std::string& name, DBBase& db) {
    std::vector<std::string> missing;
    if (!db.GetDBValueList(kMissingProcedures, missing, 1)) return;  // ZpTscripts has been reported
    for (const std::string& procedure : missing)
        list.addFailure(name, ExitCode::kInstallation,
                        "the catalogue lists " + procedure + ", but the stored procedure is missing",
                        "Create the procedure in this database.");
}

}  // namespace

void checkSchema(CheckList& list, DBBase& db, const SuiteDatabase& database) {
    const std::string name = std::string(database.name) + " schema";
    checkUses(list, name, db, database);
    checkProcedures(list, name, db);
    if (!list.hasFailed(name)) list.addGood(name, "catalogue, journal, functions and procedures work");
}
