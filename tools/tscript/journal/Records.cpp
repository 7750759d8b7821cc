#include "journal/Records.h"

#include <limits>
#include <vector>

#include "console/Console.h"
#include "console/Outcome.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

void openRecords(TScriptRecords& records, const std::string& database) {
    requireStore();
    if (!database.empty()) suiteDatabase(database);
    if (records.open(database.c_str())) return;
    const std::string chosen = records.getDbName();
    const std::string message = records.getErrorMessage();
    const Diagnosis diagnosis = diagnoseRun({}, chosen.empty() ? database : chosen, message);
    const bool isExplained = !diagnosis.scriptRan;
    if (!isExplained) throw Failure(ExitCode::kConnection, message, diagnosis.advice);
    writeNote(message);
    throw diagnosis.failure();
}

std::optional<TScriptRun_t> findRun(TScriptRecords& records, int id) {
    const bool isLargest = id == std::numeric_limits<int>::max();
    std::vector<TScriptRun_t> page;
    if (!records.listRuns({}, isLargest ? 0 : id + 1, /*maximum=*/1, page)) throwUnreadable(records);
    if (page.empty() || page.front().id != id) return std::nullopt;
    return page.front();
}

void throwUnreadable(const TScriptRecords& records) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(records, causes);
    std::string what = records.getErrorMessage();
    ExitCode code = ExitCode::kConnection;
    for (const DVUCause_t& cause : causes) {
        what += "\n" + cause.text;
        const bool hasAnswered = cause.where == kDVUStatement && cause.serverError != 0;
        if (hasAnswered) code = ExitCode::kInstallation;
    }
    throw Failure(code, what,
                  std::string("tscript schema check ") + records.getDbName() +
                      " shows whether catalogue and journal are there; if so, let the login read them.");
}
