#include "ScriptCatalogue.h"

#include <cstring>
#include <ctime>
#include <new>
#include <vector>

#include "CallerText.h"
#include "CatalogueSql.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/TScript.h"
#include "FX.h"
#include "ScriptMessages.h"
#include "SqlBuffer.h"
#include "SqlQuotes.h"

namespace {

// Without memory for its statement, adding a package counts as done although nothing was written; callers
// rely on it.
constexpr bool kShortOfMemory = true;

long long now() {
    return static_cast<long long>(std::time(nullptr));
}

}  // namespace

bool ScriptCatalogue::find() {
    if (m_script.m_tscriptId >= 1) return true;
    if (!m_report.hasSession()) return false;
    SqlBuffer query(SqlBuffer::kPlain);
    if (!query.available()) throw std::bad_alloc();
    query.format(catalogue_sql::kFindScript, quotesDoubled(*m_script.m_db, m_script.m_scriptName).c_str(),
                 m_script.m_fromPackage ? catalogue_sql::kFromPackage : catalogue_sql::kPermanent);
    std::vector<IdIdName_t> rows;
    // A failed query counts as found, with the id left as it was: callers that need the row test the id.
    if (m_script.m_db->GetDBValueIdIdNameList(query.text(), rows)) {
        if (rows.empty()) return false;
        m_script.m_tscriptId = rows.front().id1;
        m_script.m_auditLevel = rows.front().id2;
        m_script.m_scriptName = rows.front().name;
    }
    readSecured();
    return true;
}

void ScriptCatalogue::readSecured() {
    int type = 0;
    const std::string query = FXString::Format(catalogue_sql::kScriptType, m_script.m_tscriptId);
    if (m_script.m_db->GetDBValueInt(query.c_str(), type) && (type & catalogue_sql::kSecured) != 0) {
        m_script.m_secured = true;
    }
}

bool ScriptCatalogue::checkSite() {
    if (m_script.m_plexumId == 0) return true;
    if (!m_report.hasSession()) return false;
    int site = 0;
    if (!m_script.m_db->GetDBValueInt(catalogue_sql::kSiteNumber, site)) {
        return m_report.report(messages::kNoSiteNumber);
    }
    if (site == m_script.m_plexumId) return true;
    return m_report.report(FXString::Format(messages::kOtherSite, static_cast<unsigned int>(site)));
}

bool ScriptCatalogue::checkGuid() {
    if (m_script.m_guid.empty() || m_script.m_dbName != "NQ2") return true;
    if (!m_report.hasSession()) return false;
    std::vector<std::string> rows;  // as a list: a value of any length fits
    if (!m_script.m_db->GetDBValueList(catalogue_sql::kInstallationGuid, rows, 1) || rows.empty()) {
        return m_report.report(messages::kNoGuid);
    }
    return rows.front() == m_script.m_guid || m_report.report(messages::kOtherGuid);
}

bool ScriptCatalogue::addPackage() {
    if (!m_script.m_fromPackage) return false;
    if (!m_report.hasSession()) return false;
    SqlBuffer usage(2 * m_script.m_usage.size() + 1);  // room for a text made only of quotes
    if (!usage.available()) {
        m_report.report(messages::kNoMemoryForUsage);
        return kShortOfMemory;
    }
    usage.format("%s", m_script.m_usage.c_str());
    m_script.m_db->fixTheString(usage.text());
    SqlBuffer statement(std::strlen(usage.text()) + SqlBuffer::kSpare);
    if (!statement.available()) {
        m_report.report(messages::kNoMemoryForQuery);
        return kShortOfMemory;
    }
    m_script.getTscriptId();  // the id tells, also after a failed query
    return m_script.m_tscriptId < 1 ? insertPackage(usage.text(), statement)
                                    : updateUsage(usage.text(), statement);
}

bool ScriptCatalogue::insertPackage(const char* usage, SqlBuffer& statement) {
    statement.format(catalogue_sql::kInsertScript, catalogue_sql::kFromPackage,
                     quotesDoubled(*m_script.m_db, m_script.m_scriptName).c_str(), m_script.m_auditLevel,
                     static_cast<long long>(m_script.m_creationTime), usage);
    if (m_script.m_db->GetDBValueInt(statement.text(), m_script.m_tscriptId)) return true;
    return m_report.report(FXString::Format(messages::kInsertFailed, m_script.m_db->getErrorMsg()));
}

// Name, type, audit level and creation time of an existing row never change.
bool ScriptCatalogue::updateUsage(const char* usage, SqlBuffer& statement) {
    statement.format(catalogue_sql::kUpdateUsage, usage, m_script.m_tscriptId);
    if (m_script.m_db->SetDBValue(statement.text())) return true;
    return m_report.report(FXString::Format(messages::kUpdateFailed, m_script.m_db->getErrorMsg()));
}

bool ScriptCatalogue::recordStart(const char* inputParams) {
    if (!m_report.hasSession()) return false;
    const std::string parameters = textOrEmpty(inputParams);
    SqlBuffer statement(parameters.size() +
                        SqlBuffer::kSpare);  // by the length before the quotes are doubled
    if (!statement.available()) return m_report.report(messages::kNoMemoryForQuery);
    const long long timeStart = now();
    const long long timeEnd = now();
    statement.format(catalogue_sql::kRecordStart, timeStart, timeEnd,
                     quotesDoubled(*m_script.m_db, parameters).c_str(), m_script.m_userId,
                     m_script.m_tscriptId);
    if (m_script.m_db->GetDBValueInt(statement.text(), m_script.m_execId)) return true;
    return m_report.report(FXString::Format(messages::kStartNotRecorded, m_script.m_db->getErrorMsg()));
}

bool ScriptCatalogue::recordEnd(int status) {
    if (m_script.m_execId <= 0) return m_report.report(messages::kEndWithoutStart);
    if (!m_report.hasSession()) return false;
    const std::string statement =
        FXString::Format(catalogue_sql::kRecordEnd, now(), status, m_script.m_execId);
    if (m_script.m_db->SetDBValue(statement.c_str())) return true;
    return m_report.report(FXString::Format(messages::kEndNotRecorded, m_script.m_db->getErrorMsg()));
}

bool ScriptCatalogue::read(const char* sql, int columns, std::vector<std::string>& rows) {
    return m_script.m_db->GetValue(sql, rows, columns);
}
