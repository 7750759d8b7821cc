#include "catalogue/ScriptJournal.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "CallerText.h"
#include "Causes.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/Diagnostics.h"
#include "FX.h"
#include "text/CatalogueSql.h"
#include "text/ScriptMessages.h"
#include "text/SqlBuffer.h"
#include "text/SqlQuotes.h"

namespace {

// The end of a run is recorded again for this long while it fails for a reason that may pass.
constexpr std::chrono::seconds kRetryTime{5};
constexpr std::chrono::milliseconds kRetryInterval{500};
constexpr int kUnknownPlace = 0;  // DVUCause_t::where

long long now() {
    return static_cast<long long>(std::time(nullptr));
}

// Whether the cut of a start statement may be behind the list of columns. Without its condition it would add
// a row for every script, without its last part a row whose id is not known.
bool mayAddUnknownRows(std::string_view statement) {
    return statement.find(catalogue_sql::kStartSource) != statement.npos &&
           !statement.ends_with(catalogue_sql::kStartId);
}

}  // namespace

bool ScriptJournal::recordStart(const char* inputParams) {
    if (!m_report.requireSession()) return false;
    const std::string parameters = textOrEmpty(inputParams);
    // Sized by the length before the quotes are doubled; callers rely on it.
    SqlBuffer statement(parameters.size() + SqlBuffer::kSpare);
    if (!statement.available()) return m_report.fail(messages::kNoMemoryForQuery);
    const long long timeStart = now();
    const long long timeEnd = now();
    const bool isWhole =
        statement.format(catalogue_sql::kRecordStart, timeStart, timeEnd,
                         quotesDoubled(*m_session.db, parameters).c_str(), m_run.userId, m_entry.id);
    m_run.execId = 0;  // not that of an earlier run
    const bool isSent = isWhole || !mayAddUnknownRows(statement.text());
    if (isSent && m_session.db->GetDBValueInt(statement.text(), m_run.execId)) return true;
    if (!isSent) noteCause({.where = kDVUStatement, .text = messages::kTooManyQuotes});
    return m_report.fail(FXString::Format(messages::kStartNotRecorded, m_session.db->getErrorMsg()));
}

bool ScriptJournal::recordEnd(int status) {
    if (m_run.execId <= 0) return m_report.fail(messages::kEndWithoutStart);
    if (!m_report.requireSession()) return false;
    const std::string statement = FXString::Format(catalogue_sql::kRecordEnd, now(), status, m_run.execId);
    if (updateRepeatedly(statement)) return true;
    return m_report.fail(FXString::Format(messages::kEndNotRecorded, m_session.db->getErrorMsg()));
}

bool ScriptJournal::updateRepeatedly(const std::string& statement) {
    const auto giveUp = std::chrono::steady_clock::now() + kRetryTime;
    while (!m_session.db->SetDBValue(statement.c_str())) {
        if (!mayPass() || std::chrono::steady_clock::now() >= giveUp) return false;
        std::this_thread::sleep_for(kRetryInterval);
    }
    return true;
}

// A lost connection, or a failure whose place or cause is not known, such as too little memory.
bool ScriptJournal::mayPass() const {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(*m_session.db, causes);
    return causes.empty() || std::any_of(causes.begin(), causes.end(), [](const DVUCause_t& cause) {
               return cause.where == kDVUConnection || cause.where == kUnknownPlace;
           });
}
