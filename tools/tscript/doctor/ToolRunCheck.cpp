// Check of the query tool by a run of it.
#include <string>
#include <system_error>

#include "HostSetup.h"
#include "doctor/CheckSteps.h"
#include "doctor/ProbeFile.h"
#include "installation/Diagnosis.h"
#include "installation/ToolLimit.h"
#include "system/Interrupt.h"

namespace {

// The server computes the answer, so that a tool that prints its input does not pass.
constexpr const char* kStatement = "SET NOCOUNT ON\nSELECT 'answer ' + CONVERT(varchar(9), 6 * 7)\nGO\n";
constexpr const char* kAnswer = "answer 42";
constexpr int kNoOptions = 0;

}  // namespace

void checkToolRun(CheckList& list, DBBase& db, const SuiteDatabase& database) {
    const std::string name = std::string(database.name) + " query tool";
    const std::string advice =
        "Run it by hand with the same server and login. The path is host.programs.sqlcmd in the store.";
    if (list.hasFailed("sqlcmd")) return list.addSkipped(name, "not tried: sqlcmd does not start");
    try {
        const ProbeFile sql(folderOfRuns(), kStatement);
        const ProbeFile output(sessionLogFile().parent_path(), "");
        const InterruptGuard guard;
        ToolLimit limit;
        const bool succeeded =
            db.RunFileQuery_TS(sql.path().c_str(), output.path().c_str(), database.name, kNoOptions);
        if (guard.interrupted()) throw Failure(ExitCode::kInterrupted, "interrupted");
        if (limit.expired())
            return list.addFailure(name, ExitCode::kInstallation,
                                   hostlayer::queryToolPath() + " " + ToolLimit::text(), advice);
        const std::string answer = output.content();
        if (succeeded && answer.find(kAnswer) != std::string::npos)
            return list.addGood(name, "runs a statement and writes its output");
        list.addFailure(
            name, ExitCode::kInstallation,
            hostlayer::queryToolPath() +
                (succeeded ? " succeeds without the statement's result" : " fails on a statement") +
                (answer.empty() ? "; its output is empty" : ":\n" + answer),
            advice);
    } catch (const std::system_error& error) {
        list.addFailure(name, ExitCode::kInstallation,
                        std::string("its files cannot be created: ") + error.code().message(),
                        "See the findings on the temporary folder and the log folder.");
    }
}
