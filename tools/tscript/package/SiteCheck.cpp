#include "package/SiteCheck.h"

#include <strings.h>

#include <vector>

#include "installation/Account.h"
#include "installation/Installation.h"

namespace {

constexpr const char* kSiteNumber = "SELECT number FROM dorvas..app_plexum WHERE id = 2";
constexpr const char* kInstallationGuid =
    "SELECT SettingValue FROM NQSetting WHERE SettingName = 'NQ2_DATABASE_ID'";

const std::string& read(std::optional<std::string>& value, const char* database, const char* sql) {
    if (value) return *value;
    DBBase db(/*flag=*/false);
    std::vector<std::string> rows;
    const bool isRead =
        openAccount(db, suiteDatabase(database)) && db.GetDBValueList(sql, rows, 1) && !rows.empty();
    return value.emplace(isRead ? rows.front() : "");
}

bool isBoundToNq2(const PackageContent& package) {
    return !package.guid.empty() && strcasecmp(package.databaseName.c_str(), "NQ2") == 0;
}

}  // namespace

const std::string& Site::number() {
    return read(m_number, "Dorvas", kSiteNumber);
}

const std::string& Site::guid() {
    return read(m_guid, "NQ2", kInstallationGuid);
}

bool isSiteUnknown(const PackageContent& package, Site& site) {
    return (package.plexumId != 0 && site.number().empty()) || (isBoundToNq2(package) && site.guid().empty());
}

std::optional<SiteFault> siteFault(const PackageContent& package, Site& site) {
    if (package.plexumId != 0 && !site.number().empty() && site.number() != std::to_string(package.plexumId))
        return SiteFault{
            "is made for site " + std::to_string(package.plexumId) + "; this is site " + site.number(),
            "Ask its developer for a package for this site, or delete it."};
    if (isBoundToNq2(package) && !site.guid().empty() && site.guid() != package.guid)
        return SiteFault{"is made for the NQ2 database " + package.guid + "; this is " + site.guid(),
                         "Ask its developer for a package for this database, or delete it."};
    return std::nullopt;
}
