#include "run/RunLock.h"

#include <fnmatch.h>

#include <sstream>
#include <vector>

#include "HostSettings.h"
#include "console/Console.h"
#include "console/Outcome.h"
#include "installation/Account.h"
#include "installation/Components.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "installation/ServerQuery.h"
#include "system/Interrupt.h"

namespace {

constexpr std::chrono::milliseconds kAttempt{500};  // short: a signal is noticed between two attempts
constexpr std::chrono::milliseconds kNoWait{0};

// Name of the lock. The server compares names of locks exactly, but those of scripts without regard to case.
std::string resourceOf(std::string script) {
    for (char& c : script)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return "tscript:" + script;
}

// Results of the batch that takes the lock.
constexpr int kGranted = 1;
constexpr int kHeldByAnother = 2;

std::string databaseOfComponent() {
    const std::vector<const SuiteDatabase*> installed = installedDatabases();
    return installed.empty() ? "Dorvas" : installed.front()->name;
}

}  // namespace

LockMode configuredLockMode(const std::string& script) {
    std::istringstream names(hostlayer::hostSetting("lockedScripts", ""));
    for (std::string name; std::getline(names, name, ',');) {
        const std::size_t begin = name.find_first_not_of(' ');
        if (begin == std::string::npos) continue;
        name = name.substr(begin, name.find_last_not_of(' ') + 1 - begin);
        if (fnmatch(name.c_str(), script.c_str(), FNM_CASEFOLD) == 0) return LockMode::kWait;
    }
    return LockMode::kNone;
}

RunLock::RunLock(const std::string& script, const std::string& database, LockMode mode,
                 const InterruptGuard& guard)
    : m_script(script), m_db(/*flag=*/false) {
    const std::string chosen = database.empty() ? databaseOfComponent() : database;
    if (!openAccount(m_db, suiteDatabase(chosen)) || !m_db.Open(nullptr, nullptr, nullptr)) {
        if (guard.interrupted()) throw Failure(ExitCode::kInterrupted, "interrupted");
        throw diagnoseDatabase(chosen).failure();
    }
    if (acquire(kNoWait, guard)) return;
    const std::string holder = describeHolder();
    if (mode == LockMode::kFail)
        throw Failure(ExitCode::kRefused, holder, "--lock=wait waits until that run has ended.");
    writeNote(holder + "; waiting");
    while (!guard.interrupted())
        if (acquire(kAttempt, guard)) return;
    if (guard.timedOut()) throw Failure(ExitCode::kRefused, holder + "; given up after the time-out");
    throw Failure(ExitCode::kInterrupted, "interrupted while waiting for the lock");
}

bool RunLock::acquire(std::chrono::milliseconds time, const InterruptGuard& guard) {
    const std::string sql =
        "SET NOCOUNT ON  DECLARE @result int  EXEC @result = sp_getapplock @Resource = N'" +
        resourceOf(m_script) +
        "', @LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = " + std::to_string(time.count()) +
        "  SELECT CASE WHEN @result >= 0 THEN " + std::to_string(kGranted) + " WHEN @result = -1 THEN " +
        std::to_string(kHeldByAnother) + " ELSE 3 END";
    const int result = m_db.GetValue(sql.c_str(), nullptr, nullptr);
    const bool isKnown = result == kGranted || result == kHeldByAnother;
    if (!isKnown && !guard.interrupted())
        throw Failure(ExitCode::kConnection, withCauses("the lock of " + m_script + " cannot be taken", m_db),
                      "See the server's message in the debug log beside " + sessionLogFile().string() + ".");
    return result == kGranted;
}

// The journal knows the runs that have begun.
std::string RunLock::describeHolder() {
    const std::string sql =
        "SELECT TOP 1 CONVERT(varchar(12), id) + ', which has been running since ' + "
        "CONVERT(varchar(19), timeStart, 120) FROM ZpTscriptExec WHERE name = N'" +
        m_script + "' AND status = 0 ORDER BY id DESC";
    std::vector<std::string> rows;
    const bool isKnown = m_db.GetValue(sql.c_str(), rows, 1) && !rows.empty();
    return m_script + " is locked by " + (isKnown ? "run " + rows.front() : "a run that has not begun yet");
}
