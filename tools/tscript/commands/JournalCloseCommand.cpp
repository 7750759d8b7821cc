// Command `journal close`: ends the row of a run that was killed.
#include <ctime>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "console/Console.h"
#include "installation/Account.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "installation/ServerQuery.h"
#include "journal/Records.h"
#include "journal/RunView.h"

namespace {

constexpr std::size_t kLongestRemark = 1000;

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

// Throws Failure (kUsage) for a row that does not exist, has an end, or may belong to a live run.
void requireAbandoned(TScriptRecords& records, const CloseOptions& options) {
    const std::string name = "run " + std::to_string(options.id);
    const std::optional<TScriptRun_t> run = findRun(records, options.id);
    if (!run) throw Failure(ExitCode::kUsage, "the journal has no " + name);
    const RunState state = RunView(*run, options.records.staleHours).state;
    if (state != RunState::kRunning && state != RunState::kAbandoned)
        throw Failure(ExitCode::kUsage, name + " has ended");
    if (state == RunState::kRunning)
        throw Failure(ExitCode::kUsage, name + " is not abandoned: it may still be running",
                      "--stale HOURS sets the age from which a run without an end is abandoned.");
}

// Returns whether the row was changed: another program may have recorded the end since it was read.
bool recordEnd(DBBase& db, const CloseOptions& options) {
    const std::string now = "dbo.GetDateTime(" + std::to_string(std::time(nullptr)) + ")";
    const std::string sql =
        "SET NOCOUNT ON UPDATE ZpTscriptExec SET status = 2, timeEnd = " + now +
        ", inputParams = ISNULL(inputParams, N'') + N' [" + withQuotesDoubled(options.remark) +
        "]' WHERE id = " + std::to_string(options.id) + " AND status = 0 SELECT @@ROWCOUNT";
    int changedRows = 0;
    if (!db.GetDBValueInt(sql.c_str(), changedRows))
        throw Failure(ExitCode::kConnection, withCauses("the journal cannot be changed", db));
    return changedRows > 0;
}

ExitCode closeRun(const CloseOptions& options) {
    checkText("the remark", options.remark, kLongestRemark);
    TScriptRecords records;
    openRecords(records, options.records.database);
    requireAbandoned(records, options);
    const std::string database = records.getDbName();
    DBBase db(/*flag=*/false);
    if (!openAccount(db, suiteDatabase(database))) throw diagnoseDatabase(database).failure();
    if (!recordEnd(db, options))
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
