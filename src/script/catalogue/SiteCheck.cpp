#include "catalogue/SiteCheck.h"

#include <string>
#include <vector>

#include "Causes.h"
#include "DVUtilities/DBBase.h"
#include "FX.h"
#include "text/CatalogueSql.h"
#include "text/ScriptMessages.h"

bool SiteCheck::checkSite() {
    if (m_package.plexumId == 0) return true;
    if (!m_report.requireSession()) return false;
    int site = 0;
    if (!m_session.db->GetDBValueInt(catalogue_sql::kSiteNumber, site))
        return m_report.fail(messages::kNoSiteNumber);
    return site == m_package.plexumId ||
           m_report.fail(FXString::Format(messages::kOtherSite, static_cast<unsigned int>(site)));
}

bool SiteCheck::checkGuid() {
    if (m_package.guid.empty() || m_session.dbName != "NQ2") return true;
    if (!m_report.requireSession()) return false;
    std::vector<std::string> rows;  // a list, because a value of any length fits into it
    const bool isRead = m_session.db->GetDBValueList(catalogue_sql::kInstallationGuid, rows, 1);
    if (isRead && rows.empty()) noteCause({.where = kDVUStatement, .text = messages::kGuidRowMissing});
    if (!isRead || rows.empty()) return m_report.fail(messages::kNoGuid);
    return rows.front() == m_package.guid || m_report.fail(messages::kOtherGuid);
}
