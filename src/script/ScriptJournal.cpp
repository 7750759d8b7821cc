#include "ScriptJournal.h"

#include <ctime>
#include <string>

#include "CallerText.h"
#include "CatalogueSql.h"
#include "DVUtilities/DBBase.h"
#include "FX.h"
#include "ScriptMessages.h"
#include "SqlBuffer.h"
#include "SqlQuotes.h"

namespace {

long long now() {
    return static_cast<long long>(std::time(nullptr));
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
    statement.format(catalogue_sql::kRecordStart, timeStart, timeEnd,
                     quotesDoubled(*m_session.db, parameters).c_str(), m_run.userId, m_entry.id);
    if (m_session.db->GetDBValueInt(statement.text(), m_run.execId)) return true;
    return m_report.fail(FXString::Format(messages::kStartNotRecorded, m_session.db->getErrorMsg()));
}

bool ScriptJournal::recordEnd(int status) {
    if (m_run.execId <= 0) return m_report.fail(messages::kEndWithoutStart);
    if (!m_report.requireSession()) return false;
    const std::string statement = FXString::Format(catalogue_sql::kRecordEnd, now(), status, m_run.execId);
    if (m_session.db->SetDBValue(statement.c_str())) return true;
    return m_report.fail(FXString::Format(messages::kEndNotRecorded, m_session.db->getErrorMsg()));
}
