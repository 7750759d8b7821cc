#include "DVUtilities/TScriptRecords.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>
#include <string_view>
#include <utility>

#include "CallerText.h"
#include "Causes.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/TScript.h"
#include "ExceptionGuard.h"
#include "FX.h"
#include "RowText.h"
#include "catalogue/ScriptSession.h"
#include "state/Attempt.h"
#include "state/ScriptParts.h"
#include "text/CatalogueSql.h"
#include "text/NamePattern.h"
#include "text/ScriptMessages.h"

namespace {

constexpr char kSeparator = '\x12';  // of a row text's columns
constexpr int kLongestPage = 10000;
constexpr char kSessionName[] = "TScriptRecords";  // in the session log

// The columns of a row text. The last one gets the rest, separators included.
template <std::size_t kCount>
std::array<std::string, kCount> columnsOf(std::string_view row) {
    std::array<std::string, kCount> columns;
    for (std::size_t i = 0; i + 1 < kCount; ++i) {
        const std::size_t end = row.find(kSeparator);
        columns[i] = row.substr(0, end);
        row.remove_prefix(end == row.npos ? row.size() : end + 1);
    }
    columns.back() = row;
    return columns;
}

// "YYYY-MM-DD hh:mm:ss" as seconds since 1970, read as UTC; 0 for any other text.
std::int64_t secondsOf(const std::string& text) {
    std::tm time{};
    const char* end = strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &time);
    return end != nullptr && *end == '\0' ? timegm(&time) : 0;
}

// " WHERE ... AND ..." of the conditions that are not empty.
std::string where(std::initializer_list<std::string> conditions) {
    std::string text;
    for (const std::string& condition : conditions)
        if (!condition.empty()) text += (text.empty() ? " WHERE " : " AND ") + condition;
    return text;
}

std::string olderThan(int id) {
    return id > 0 ? "id < " + std::to_string(id) : std::string();
}

// Condition of the runs that took longer, or have not ended. Uses DATEADD(), because DATEDIFF() fails for
// times that are far apart.
std::string lastedLongerThan(std::int64_t seconds) {
    const std::int64_t bounded = std::min<std::int64_t>(seconds, std::numeric_limits<int>::max());
    return "(status = 0 OR timeEnd > DATEADD(second, " + std::to_string(bounded) + ", timeStart))";
}

std::string named(std::string_view pattern) {
    return pattern.empty() ? std::string() : nameCondition(pattern);
}

}  // namespace

struct ScriptRecords {
    TScript script;
    std::string error;
    std::vector<DVUCause_t> causes;  // of the last operation; empty after a success
    std::int64_t offset = 0;         // of the database's times from UTC

    bool fail(std::string reason) {
        error = std::move(reason);
        return false;
    }
    bool open(const char* dbName);
    bool read(const std::string& sql, int columns, std::vector<std::string>& rows);
    bool readOffset();
    bool checkPage(std::string_view pattern, int maximum);
    std::int64_t timeOf(const std::string& text) const {
        const std::int64_t seconds = secondsOf(text);
        return seconds == 0 ? 0 : seconds - offset;
    }
    TScriptEntry_t entryOf(const std::string& row) const;
    TScriptRun_t runOf(const std::string& row) const;

    template <typename Work>
    bool attempted(Work&& work) {
        CauseCollector collector;
        const bool done = attempt(std::forward<Work>(work), [&] { error = messages::kBrokenOff; });
        causes = done ? std::vector<DVUCause_t>() : std::move(collector.causes());
        return done;
    }
};

bool ScriptRecords::open(const char* dbName) {
    if (*script.getDbName() != '\0') return fail(messages::records::kOpenTwice);
    if (!script.initialize(kSessionName)) return fail(script.getErrorMessage());
    if (!ScriptSession(partsOf(script)).openDatabase(dbName)) return fail(script.getErrorMessage());
    return readOffset();
}

bool ScriptRecords::read(const std::string& sql, int columns, std::vector<std::string>& rows) {
    if (*script.getDbName() == '\0') return fail(messages::records::kNotOpen);
    if (partsOf(script).session.db->GetValue(sql.c_str(), rows, columns)) return true;
    return fail(FXString::Format(messages::records::kNotRead, script.getDbName()));
}

// The database may store UTC or a local time: its conversion of the current time shows the difference.
bool ScriptRecords::readOffset() {
    const long long now = std::time(nullptr);
    std::vector<std::string> rows;
    if (!read(FXString::Format(catalogue_sql::kTimeAs, now), 1, rows)) return false;
    const std::int64_t converted = rows.empty() ? 0 : secondsOf(rows.front());
    if (converted == 0) return fail(FXString::Format(messages::records::kNotRead, script.getDbName()));
    offset = converted - now;
    return true;
}

bool ScriptRecords::checkPage(std::string_view pattern, int maximum) {
    if (pattern.size() > kLongestNamePattern) return fail(messages::records::kPatternTooLong);
    if (maximum < 1 || maximum > kLongestPage) return fail(messages::records::kPageLength);
    return true;
}

TScriptEntry_t ScriptRecords::entryOf(const std::string& row) const {
    auto columns = columnsOf<catalogue_sql::kScriptColumns>(row);
    TScriptEntry_t entry;
    entry.id = leadingNumber(columns[0]);
    entry.type = leadingNumber(columns[1]);
    entry.auditLevel = leadingNumber(columns[2]);
    entry.creationTime = timeOf(columns[3]);
    entry.name = std::move(columns[4]);
    return entry;
}

TScriptRun_t ScriptRecords::runOf(const std::string& row) const {
    auto columns = columnsOf<catalogue_sql::kRunColumns>(row);
    TScriptRun_t run;
    run.id = leadingNumber(columns[0]);
    run.scriptId = leadingNumber(columns[1]);
    run.type = leadingNumber(columns[2]);
    run.status = leadingNumber(columns[3]);
    run.userId = leadingNumber(columns[4]);
    run.startTime = timeOf(columns[5]);
    run.endTime = timeOf(columns[6]);
    run.name = std::move(columns[7]);
    run.input = std::move(columns[8]);
    return run;
}

void DVU_GetCauses(const TScriptRecords& records, std::vector<DVUCause_t>& causes) {
    causes.clear();
    if (records.m_impl != nullptr) guarded([&] { causes = records.m_impl->causes; });
}

TScriptRecords::TScriptRecords()
    : m_impl(guarded(static_cast<ScriptRecords*>(nullptr), [] { return new ScriptRecords; })) {}

TScriptRecords::~TScriptRecords() {
    delete m_impl;
}

bool TScriptRecords::open(const char* dbName) {
    return m_impl != nullptr && m_impl->attempted([&] { return m_impl->open(dbName); });
}

bool TScriptRecords::listScripts(const char* namePattern, int beforeId, int maximum,
                                 std::vector<TScriptEntry_t>& entries) {
    entries.clear();
    return m_impl != nullptr && m_impl->attempted([&] {
        const std::string_view pattern = textOrEmpty(namePattern);
        if (!m_impl->checkPage(pattern, maximum)) return false;
        const std::string sql = FXString::Format(catalogue_sql::kListScripts, maximum,
                                                 where({olderThan(beforeId), named(pattern)}).c_str());
        std::vector<std::string> rows;
        if (!m_impl->read(sql, catalogue_sql::kScriptColumns, rows)) return false;
        std::vector<TScriptEntry_t> page;
        page.reserve(rows.size());
        for (const std::string& row : rows) page.push_back(m_impl->entryOf(row));
        entries = std::move(page);
        return true;
    });
}

bool TScriptRecords::listRuns(const TScriptRunFilter_t& filter, int beforeId, int maximum,
                              std::vector<TScriptRun_t>& runs) {
    runs.clear();
    return m_impl != nullptr && m_impl->attempted([&] {
        if (!m_impl->checkPage(filter.namePattern, maximum)) return false;
        const std::string since = filter.since != 0 ? "timeStart >= @since" : "";
        const std::string status = filter.status >= 0 ? "status = " + std::to_string(filter.status) : "";
        const std::string length = filter.longerThan >= 0 ? lastedLongerThan(filter.longerThan) : "";
        const std::string sql = FXString::Format(
            catalogue_sql::kListRuns, static_cast<long long>(filter.since), maximum,
            where({olderThan(beforeId), status, length, since, named(filter.namePattern)}).c_str());
        std::vector<std::string> rows;
        if (!m_impl->read(sql, catalogue_sql::kRunColumns, rows)) return false;
        std::vector<TScriptRun_t> page;
        page.reserve(rows.size());
        for (const std::string& row : rows) page.push_back(m_impl->runOf(row));
        runs = std::move(page);
        return true;
    });
}

const char* TScriptRecords::getDbName() const {
    return m_impl != nullptr ? m_impl->script.getDbName() : "";
}

const char* TScriptRecords::getErrorMessage() const {
    return m_impl != nullptr ? m_impl->error.c_str() : messages::kBrokenOff;
}
