// Command `journal close`: ends the row of a run that was killed.
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "console/Console.h"
#include "installation/Account.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "installation/ServerQuery.h"
#include "journal/Records.h"

namespace {

constexpr std::size_t kLongestRemark = 1000;
constexpr double kSecondsPerHour = 3600;

struct CloseOptions {
    RecordOptions records;
    int id = 0;
    std::string remark = "closed by tscript journal close";
};

std::string withQuotesDoubled(const std::string& text) {
    std::string doubled;
    for (const char c : text) doubled += c == '\'' ? "''" : std::string(1, c);
    return doubled;
}

std::vector<std::string> query(DBBase& db, const std::string& sql) {
    std::vector<std::string> rows;
    if (db.GetDBValueList(sql.c_str(), rows, 1)) return rows;
    throw Failure(ExitCode::kConnection, withCauses("the journal cannot be read or changed", db));
}

// Throws Failure (kUsage) for a row that does not exist, has an end, or may belong to a live run.
void requireAbandoned(DBBase& db, const CloseOptions& options, const std::string& now) {
    const std::string row = "run " + std::to_string(options.id);
    const std::string where = " FROM ZpTscriptExec WHERE id = " + std::to_string(options.id);
    const std::vector<std::string> status = query(db, "SELECT status" + where);
    if (status.empty()) throw Failure(ExitCode::kUsage, "the journal has no " + row);
    if (status.front() != "0") throw Failure(ExitCode::kUsage, row + " has ended");
    const std::vector<std::string> seconds =
        query(db, "SELECT DATEDIFF(second, timeStart, " + now + ")" + where);
    if (seconds.empty() || std::stod(seconds.front()) < options.records.staleHours * kSecondsPerHour)
        throw Failure(ExitCode::kUsage, row + " is not abandoned: it may still be running",
                      "--stale HOURS sets the age from which a run without an end is abandoned.");
}

ExitCode closeRun(const CloseOptions& options) {
    checkText("the remark", options.remark, kLongestRemark);
    TScriptRecords records;
    openRecords(records, options.records.database);
    const std::string database = records.getDbName();
    DBBase db(/*flag=*/false);
    if (!openAccount(db, suiteDatabase(database))) throw diagnoseDatabase(database).failure();
    const std::string now = "dbo.GetDateTime(" + std::to_string(std::time(nullptr)) + ")";
    requireAbandoned(db, options, now);
    const std::vector<std::string> closedRows =
        query(db, "SET NOCOUNT ON UPDATE ZpTscriptExec SET status = 2, timeEnd = " + now +
                      ", inputParams = ISNULL(inputParams, N'') + N' [" + withQuotesDoubled(options.remark) +
                      "]' WHERE id = " + std::to_string(options.id) + " AND status = 0 SELECT @@ROWCOUNT");
    if (closedRows.empty() || closedRows.front() == "0")
        throw Failure(ExitCode::kUsage, "run " + std::to_string(options.id) + " has ended meanwhile");
    writeNote("closed run " + std::to_string(options.id) + " of " + database + " as failed");
    return ExitCode::kDone;
}

}  // namespace

void addJournalCloseCommand(CLI::App* journal, Action& action) {
    const auto options = std::make_shared<CloseOptions>();
    CLI::App* command =
        addCommand(journal, action, "close", "End the row of an abandoned run as failed, with a remark",
                   options, closeRun);
    addNumber(
        command, "ID", options->id, "The run's number in the journal",
        {.least = 1, .most = std::numeric_limits<int>::max(), .defaultInHelp = false, .required = true});
    addOption(command, "--remark", options->remark, "Text that is added to the recorded parameters",
              {.type = "TEXT", .mayBeEmpty = true});
    addStaleOption(command, options->records.staleHours);
    addDatabaseOption(command, options->records.database);
}
