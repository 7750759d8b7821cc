#include "journal/RunWatch.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/TScriptRecords.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/Listing.h"
#include "console/Outcome.h"
#include "console/Terminal.h"
#include "console/Times.h"
#include "installation/ServerQuery.h"
#include "journal/Records.h"
#include "journal/RunView.h"

namespace {

constexpr int kMostRuns = 1000;
constexpr unsigned int kInterval = 2;
constexpr const char* kClearScreen = "\x1b[H\x1b[J";

// Sessions of query tools, which run the scripts.
constexpr const char* kSessions =
    "SELECT s.session_id, DATEDIFF(second, s.login_time, GETDATE()), COALESCE(r.status, s.status), "
    "r.wait_type, "
    "CONVERT(varchar(12), NULLIF(r.blocking_session_id, 0)), b.login_name, b.program_name, b.host_name "
    "FROM sys.dm_exec_sessions s LEFT JOIN sys.dm_exec_requests r ON r.session_id = s.session_id "
    "LEFT JOIN sys.dm_exec_sessions b ON b.session_id = r.blocking_session_id "
    "WHERE s.is_user_process = 1 AND s.program_name LIKE 'SQLCMD%' ORDER BY s.session_id";
constexpr int kSessionColumns = 8;

struct ServerSession {
    std::string id;
    std::int64_t begin;   // in seconds since 1970, by this host's clock
    std::string state;    // "running", "sleeping"; "suspended" with the wait
    std::string blocker;  // session, login, program and host; empty: none
};

struct RunningScript {
    TScriptRun_t run;
    std::int64_t seconds;
    std::optional<ServerSession> session;
};

ServerSession sessionOf(const std::vector<std::string>& row) {
    std::string blocker = row[4];
    for (std::size_t column = 5; !row[4].empty() && column < row.size(); ++column)
        if (!row[column].empty()) blocker += (column == 5 ? " (" : ", ") + row[column];
    if (blocker != row[4]) blocker += ")";
    return {.id = row[0],
            .begin = std::time(nullptr) - std::strtoll(row[1].c_str(), nullptr, 10),
            .state = row[3].empty() ? row[2] : row[2] + ", " + row[3],
            .blocker = blocker};
}

constexpr std::int64_t kRounding = 2;  // of two clocks, in seconds

// The query tool logs in when the row of its run has been written: the session that began next is the run's.
// One that began when the `next` run had started is not: a killed run has a row without an end and no
// session.
std::optional<ServerSession> takeSession(std::vector<ServerSession>& sessions, std::int64_t start,
                                         std::int64_t next) {
    constexpr std::int64_t kLatest = 10;
    const bool isNextDistinct = next - start > kRounding;
    const auto isOfRun = [&](const ServerSession& session) {
        return session.begin - start >= -kRounding && session.begin - start <= kLatest &&
               (!isNextDistinct || session.begin < next);
    };
    auto best = sessions.end();
    for (auto session = sessions.begin(); session != sessions.end(); ++session)
        if (isOfRun(*session) && (best == sessions.end() || session->begin < best->begin)) best = session;
    if (best == sessions.end()) return std::nullopt;
    std::optional<ServerSession> found = std::move(*best);
    sessions.erase(best);
    return found;
}

class RunWatch {
  public:
    explicit RunWatch(const WatchOptions& options) : m_options(options), m_db(/*flag=*/false) {
        openRecords(m_records, options.database);
    }
    std::vector<RunningScript> look();

  private:
    std::vector<TScriptRun_t> openRuns(const std::string& pattern);
    std::vector<ServerSession> sessions();

    const WatchOptions& m_options;
    TScriptRecords m_records;
    DBBase m_db;
    bool m_isConnected = false;
    bool m_hasWarned = false;
};

std::vector<ServerSession> RunWatch::sessions() try {
    if (!m_isConnected) connectToServer(m_db, m_records.getDbName());
    m_isConnected = true;
    std::vector<ServerSession> sessions;
    for (const auto& row : rowsOf(m_db, kSessions, kSessionColumns)) sessions.push_back(sessionOf(row));
    return sessions;
} catch (const Failure& failure) {  // without the right VIEW SERVER STATE, for example
    if (!m_hasWarned) writeNote(std::string("The server's sessions are not visible: ") + failure.what());
    m_hasWarned = true;
    return {};
}

std::vector<TScriptRun_t> RunWatch::openRuns(const std::string& pattern) {
    TScriptRunFilter_t filter;
    filter.namePattern = pattern;
    filter.status = 0;
    std::vector<TScriptRun_t> runs;
    if (!m_records.listRuns(filter, /*beforeId=*/0, kMostRuns, runs)) throwUnreadable(m_records);
    return runs;
}

// A session is looked for among those of all runs, also of runs that the pattern leaves out.
std::vector<RunningScript> RunWatch::look() {
    const std::vector<TScriptRun_t> runs = openRuns({});
    const std::vector<TScriptRun_t> shown = m_options.pattern.empty() ? runs : openRuns(m_options.pattern);
    const auto isShown = [&](int id) {
        return std::ranges::any_of(shown, [id](const TScriptRun_t& run) { return run.id == id; });
    };
    std::vector<ServerSession> all = shown.empty() ? std::vector<ServerSession>() : sessions();
    std::vector<RunningScript> found;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {  // oldest first
        const RunView view(*run, m_options.staleHours);
        const bool isNewest = std::next(run) == runs.rend();
        const std::int64_t next =
            isNewest ? std::numeric_limits<std::int64_t>::max() : std::next(run)->startTime;
        if (view.state != RunState::kRunning) continue;
        std::optional<ServerSession> session = takeSession(all, run->startTime, next);
        if (isShown(run->id)) found.push_back({*run, view.seconds, std::move(session)});
    }
    return found;
}

void writeAsJson(const std::vector<RunningScript>& scripts) {
    Json list = Json::array();
    for (const RunningScript& script : scripts) {
        const auto& session = script.session;
        list.push_back(
            {{"id", script.run.id},
             {"name", script.run.name},
             {"start", utcTime(script.run.startTime)},
             {"seconds", script.seconds},
             {"session", session ? Json(session->id) : Json()},
             {"state", session ? Json(session->state) : Json()},
             {"blockedBy", session && !session->blocker.empty() ? Json(session->blocker) : Json()}});
    }
    writeJson(list);
}

void writeAsTable(const std::vector<RunningScript>& scripts) {
    std::vector<Cells> rows;
    for (const RunningScript& script : scripts) {
        const ServerSession session = script.session.value_or(ServerSession{"-", 0, "-", {}});
        const bool isBlocked = !session.blocker.empty();
        rows.push_back({{std::to_string(script.run.id)},
                        {script.run.name},
                        {spanText(script.seconds), Shade::kActive},
                        {session.id},
                        {session.state},
                        {isBlocked ? session.blocker : "-", isBlocked ? Shade::kBad : Shade::kNone}});
    }
    Listing({{"ID"}, {"NAME", true}, {"ELAPSED"}, {"SESSION"}, {"STATE"}, {"BLOCKED BY", true}})
        .writePage(rows);
}

}  // namespace

void watchRuns(const WatchOptions& options) {
    RunWatch watch(options);
    const bool repeats = !options.json && isAnsiTerminal(STDOUT_FILENO);
    do {
        const std::vector<RunningScript> scripts = watch.look();
        if (options.json) return writeAsJson(scripts);
        if (repeats) {
            std::fputs(kClearScreen, resultStream());
            writeStyled(localTime(std::time(nullptr), "%H:%M:%S") + "  " + std::to_string(scripts.size()) +
                        " running; Ctrl-C ends");
        }
        writeAsTable(scripts);
        std::fflush(resultStream());
    } while (repeats && sleep(kInterval) == 0);
}
