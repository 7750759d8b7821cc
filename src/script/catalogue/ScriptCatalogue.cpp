#include "catalogue/ScriptCatalogue.h"

#include <cstring>
#include <new>
#include <optional>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "FX.h"
#include "catalogue/FirstRunLock.h"
#include "text/CatalogueSql.h"
#include "text/ScriptMessages.h"
#include "text/SqlBuffer.h"
#include "text/SqlQuotes.h"

namespace {

// Adding a package succeeds when memory for its statement is missing, although no row is written; callers
// rely on it.
constexpr bool kShortOfMemory = true;

}  // namespace

bool ScriptCatalogue::find() {
    if (m_entry.id >= 1) return true;
    if (!m_report.requireSession()) return false;
    SqlBuffer query(SqlBuffer::kPlain);
    if (!query.available()) throw std::bad_alloc();
    query.format(catalogue_sql::kFindScript, quotesDoubled(*m_session.db, m_session.scriptName).c_str(),
                 m_entry.fromPackage ? catalogue_sql::kFromPackage : catalogue_sql::kPermanent);
    std::vector<IdIdName_t> rows;
    // False here means that no connection could be opened. That counts as found, with the id unchanged:
    // callers that need the row test the id.
    if (m_session.db->GetDBValueIdIdNameList(query.text(), rows)) {
        if (rows.empty()) return false;
        m_entry.id = rows.front().id1;
        m_entry.auditLevel = rows.front().id2;
        m_session.scriptName = rows.front().name;
    }
    readSecured();
    return true;
}

bool ScriptCatalogue::readSecured() {
    if (m_entry.typeRead) return true;
    int type = 0;
    const std::string query = FXString::Format(catalogue_sql::kScriptType, m_entry.id);
    m_entry.typeRead = m_session.db->GetDBValueInt(query.c_str(), type);
    if (m_entry.typeRead && (type & catalogue_sql::kSecured) != 0) m_entry.secured = true;
    return m_entry.typeRead;
}

bool ScriptCatalogue::addPackage() {
    if (!m_entry.fromPackage || !m_report.requireSession()) return false;
    SqlBuffer usage(2 * m_package.usage.size() + 1);  // enough for a string of quotes only
    if (!usage.available()) {
        m_report.report(messages::kNoMemoryForUsage);
        return kShortOfMemory;
    }
    usage.format("%s", m_package.usage.c_str());
    m_session.db->fixTheString(usage.text());
    SqlBuffer statement(std::strlen(usage.text()) + SqlBuffer::kSpare);
    if (!statement.available()) {
        m_report.report(messages::kNoMemoryForQuery);
        return kShortOfMemory;
    }
    std::optional<FirstRunLock> lock;
    if (m_entry.id < 1) lock.emplace(m_package.path);
    find();  // after a failed query only the id says whether there is a row
    return m_entry.id < 1 ? insertPackage(usage.text(), statement) : updateUsage(usage.text(), statement);
}

bool ScriptCatalogue::insertPackage(const char* usage, SqlBuffer& statement) {
    statement.format(catalogue_sql::kInsertScript, catalogue_sql::kFromPackage,
                     quotesDoubled(*m_session.db, m_session.scriptName).c_str(), m_entry.auditLevel,
                     static_cast<long long>(m_package.creationTime), usage);
    if (m_session.db->GetDBValueInt(statement.text(), m_entry.id)) return true;
    return m_report.fail(FXString::Format(messages::kInsertFailed, m_session.db->getErrorMsg()));
}

// Name, type, audit level and creation time of an existing row never change.
bool ScriptCatalogue::updateUsage(const char* usage, SqlBuffer& statement) {
    statement.format(catalogue_sql::kUpdateUsage, usage, m_entry.id);
    if (m_session.db->SetDBValue(statement.text())) return true;
    return m_report.fail(FXString::Format(messages::kUpdateFailed, m_session.db->getErrorMsg()));
}
